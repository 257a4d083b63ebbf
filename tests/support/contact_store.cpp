#include "tests/support/contact_store.h"

#include <gtest/gtest.h>

namespace corvane::testing {

using namespace ce;

std::u16string GetText(IContact& contact, TextGetter get) {
  Bstr text;
  EXPECT_EQ((contact.*get)(text.put()), S_OK);
  return std::u16string(text.view());
}

void SetText(IContact& contact, TextSetter put, std::u16string_view text) {
  EXPECT_EQ((contact.*put)(Bstr(text).get()), S_OK);
}

ContactStore::ContactStore() {
  EXPECT_EQ(CoCreateInstance(CLSID_Application, nullptr, CLSCTX_INPROC_SERVER, IPOutlookApp::kIid,
                             app_.put_void()),
            S_OK);
  EXPECT_EQ(app_->Logon(0), S_OK);
}

ContactStore::~ContactStore() {
  EXPECT_EQ(app_->Logoff(), S_OK);
}

ComPtr<IContact> ContactStore::New() {
  ComPtr<IDispatch> item;
  EXPECT_EQ(app_->CreateItem(olContactItem, item.put()), S_OK);
  return item.query<IContact>();
}

LONG ContactStore::Add(const std::function<void(IContact&)>& fill) {
  const ComPtr<IContact> contact = New();
  if (fill) fill(*contact.get());
  EXPECT_EQ(contact->Save(), S_OK);
  LONG oid = 0;
  EXPECT_EQ(contact->get_Oid(&oid), S_OK);
  return oid;
}

LONG ContactStore::AddNamed(std::u16string_view firstName) {
  return Add([&](IContact& contact) { SetText(contact, &IContact::put_FirstName, firstName); });
}

void ContactStore::Change(LONG oid, const std::function<void(IContact&)>& change) {
  const ComPtr<IContact> contact = Get(oid);
  ASSERT_TRUE(contact);
  change(*contact.get());
  EXPECT_EQ(contact->Save(), S_OK);
}

void ContactStore::Delete(LONG oid) {
  const ComPtr<IContact> contact = Get(oid);
  ASSERT_TRUE(contact);
  EXPECT_EQ(contact->Delete(), S_OK);
}

ComPtr<IContact> ContactStore::Get(LONG oid) {
  ComPtr<IDispatch> item;
  if (Failed(app_->GetItemFromOid(oid, item.put()))) return nullptr;
  return item.query<IContact>();
}

std::u16string ContactStore::Text(LONG oid, TextGetter get) {
  const ComPtr<IContact> contact = Get(oid);
  EXPECT_TRUE(contact) << "no contact " << oid;
  return contact ? GetText(*contact.get(), get) : std::u16string();
}

std::vector<LONG> ContactStore::Oids() {
  const ComPtr<IPOutlookItemCollection> items = Items();
  INT count = 0;
  EXPECT_EQ(items->get_Count(&count), S_OK);
  std::vector<LONG> oids;
  for (INT index = 1; index <= count; ++index) {
    ComPtr<IDispatch> item;
    EXPECT_EQ(items->Item(index, item.put()), S_OK);
    LONG oid = 0;
    EXPECT_EQ(item.query<IContact>()->get_Oid(&oid), S_OK);
    oids.push_back(oid);
  }
  return oids;
}

ComPtr<IPOutlookItemCollection> ContactStore::Items() {
  ComPtr<IFolder> folder;
  EXPECT_EQ(app_->GetDefaultFolder(olFolderContacts, folder.put()), S_OK);
  ComPtr<IPOutlookItemCollection> items;
  EXPECT_EQ(folder->get_Items(items.put()), S_OK);
  return items;
}

}  // namespace corvane::testing
