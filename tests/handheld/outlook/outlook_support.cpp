#include "tests/handheld/outlook/outlook_support.h"

namespace ce::host::testing {
namespace {

std::u16string Number(int number) {
  const std::string text = std::to_string(number);
  return {text.begin(), text.end()};
}

}  // namespace

const std::vector<TextProperty>& TextProperties() {
  static const std::vector<TextProperty> kProperties = {
#define CE_CONTACT_TEXT(Name, Kind) \
  {#Name, TextKind::Kind, &IContact::get_##Name, &IContact::put_##Name},
      CE_CONTACT_TEXTS(CE_CONTACT_TEXT)
#undef CE_CONTACT_TEXT
  };
  return kProperties;
}

ComPtr<IPOutlookApp> NewApp() {
  ComPtr<IPOutlookApp> app;
  EXPECT_EQ(CoCreateInstance(CLSID_Application, nullptr, CLSCTX_INPROC_SERVER, IPOutlookApp::kIid,
                             app.put_void()),
            S_OK);
  return app;
}

ComPtr<IPOutlookApp> LoggedOn() {
  ComPtr<IPOutlookApp> app = NewApp();
  EXPECT_EQ(app->Logon(0), S_OK);
  return app;
}

ComPtr<IPOutlookItemCollection> Items(const ComPtr<IPOutlookApp>& app, INT folderNumber) {
  ComPtr<IFolder> folder;
  EXPECT_EQ(app->GetDefaultFolder(folderNumber, folder.put()), S_OK);
  ComPtr<IPOutlookItemCollection> items;
  if (folder) {
    EXPECT_EQ(folder->get_Items(items.put()), S_OK);
  }
  return items;
}

ComPtr<IContact> NewContact(const ComPtr<IPOutlookApp>& app) {
  return NewItem<IContact>(app, olFolderContacts);
}

ComPtr<IContact> ContactByOid(const ComPtr<IPOutlookApp>& app, LONG oid) {
  ComPtr<IDispatch> item;
  const HRESULT status = app->GetItemFromOid(oid, item.put());
  EXPECT_EQ(Succeeded(status), static_cast<bool>(item));
  return item.query<IContact>();
}

ComPtr<IContact> ContactAt(const ComPtr<IPOutlookItemCollection>& items, INT index) {
  ComPtr<IDispatch> item;
  const HRESULT status = items->Item(index, item.put());
  EXPECT_EQ(Succeeded(status), static_cast<bool>(item));
  return item.query<IContact>();
}

std::u16string Get(const ComPtr<IContact>& contact, HRESULT (IContact::*get)(BSTR*)) {
  Bstr text;
  EXPECT_EQ((contact.get()->*get)(text.put()), S_OK);
  EXPECT_NE(text.get(), nullptr);
  return std::u16string(text.view());
}

HRESULT Put(const ComPtr<IContact>& contact, HRESULT (IContact::*put)(BSTR),
            std::u16string_view text) {
  const Bstr value(text);
  return (contact.get()->*put)(value.get());
}

std::u16string FirstName(const ComPtr<IContact>& contact) {
  return Get(contact, &IContact::get_FirstName);
}

LONG OidOf(const ComPtr<IContact>& contact) {
  LONG oid = 0;
  EXPECT_EQ(contact->get_Oid(&oid), S_OK);
  return oid;
}

INT CountOf(const ComPtr<IPOutlookItemCollection>& items) {
  INT count = -1;
  EXPECT_EQ(items->get_Count(&count), S_OK);
  return count;
}

LONG AddContact(const ComPtr<IPOutlookApp>& app, std::u16string_view firstName) {
  const ComPtr<IContact> contact = NewContact(app);
  EXPECT_EQ(Put(contact, &IContact::put_FirstName, firstName), S_OK);
  EXPECT_EQ(contact->Save(), S_OK);
  return OidOf(contact);
}

std::vector<LONG> AddContacts(const ComPtr<IPOutlookApp>& app, int count) {
  std::vector<LONG> oids;
  for (int i = 1; i <= count; ++i) oids.push_back(AddContact(app, Number(i)));
  return oids;
}

std::vector<std::u16string> StoredNames() {
  const ComPtr<IPOutlookApp> app = LoggedOn();
  const ComPtr<IPOutlookItemCollection> items = Items(app);
  std::vector<std::u16string> names;
  const INT count = CountOf(items);
  for (INT i = 1; i <= count; ++i) names.push_back(FirstName(ContactAt(items, i)));
  return names;
}

int StoredCount() {
  const ComPtr<IPOutlookApp> app = LoggedOn();
  return CountOf(Items(app));
}

}  // namespace ce::host::testing
