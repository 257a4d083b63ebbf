#include "handheld/outlook/outlook_app.h"

#include "platform/status.h"
#include "tests/handheld/outlook/outlook_support.h"

namespace ce::host::testing {
namespace {

class OutlookApp : public HandheldTest {};

TEST_F(OutlookApp, AnswersFalseToASecondLogonAndToALogoffWhenOff) {
  const ComPtr<IPOutlookApp> app = NewApp();
  EXPECT_EQ(app->Logoff(), S_FALSE);
  EXPECT_EQ(app->Logon(0), S_OK);
  EXPECT_EQ(app->Logon(0), S_FALSE);
  EXPECT_EQ(app->Logoff(), S_OK);
  EXPECT_EQ(app->Logoff(), S_FALSE);
}

TEST_F(OutlookApp, LogsOnAgainAfterALogoff) {
  const ComPtr<IPOutlookApp> app = LoggedOn();
  const LONG oid = AddContact(app, u"Ada");
  EXPECT_EQ(app->Logoff(), S_OK);
  EXPECT_EQ(app->Logon(0), S_OK);
  EXPECT_EQ(FirstName(ContactByOid(app, oid)), u"Ada");
}

void ExpectAllCallsFail(const ComPtr<IPOutlookApp>& app) {
  IFolder* folder = reinterpret_cast<IFolder*>(1);
  EXPECT_EQ(app->GetDefaultFolder(olFolderContacts, &folder), E_FAIL);
  EXPECT_EQ(folder, nullptr);
  IDispatch* item = reinterpret_cast<IDispatch*>(1);
  EXPECT_EQ(app->GetItemFromOid(1, &item), E_FAIL);
  EXPECT_EQ(item, nullptr);
}

TEST_F(OutlookApp, FailsEveryOtherCallBeforeLogon) {
  ExpectAllCallsFail(NewApp());
}

TEST_F(OutlookApp, FailsEveryOtherCallAfterLogoff) {
  const ComPtr<IPOutlookApp> app = LoggedOn();
  EXPECT_EQ(app->Logoff(), S_OK);
  ExpectAllCallsFail(app);
}

TEST_F(OutlookApp, NeedsAHandheldToLogOn) {
  Handheld* current = Handheld::Current();
  Handheld::MakeCurrent(nullptr);
  const HRESULT status = NewApp()->Logon(0);
  Handheld::MakeCurrent(current);
  EXPECT_EQ(status, E_FAIL);
  EXPECT_EQ(GetLastError(), static_cast<DWORD>(E_FAIL));
}

TEST_F(OutlookApp, LeavesTheSystemErrorOfAFailedLogonAsTheLastError) {
  const ComPtr<IPOutlookApp> app = NewApp();
  const auto plan = FaultPlan::FailCalls("sqlite3_open", ERROR_DISK_FULL);
  EXPECT_EQ(app->Logon(0), static_cast<HRESULT>(0x80070070));
  EXPECT_EQ(GetLastError(), ERROR_DISK_FULL);
}

TEST_F(OutlookApp, HasTheThreeDefaultFoldersAndNoOther) {
  const ComPtr<IPOutlookApp> app = LoggedOn();
  for (const INT folder : {olFolderCalendar, olFolderContacts, olFolderTasks}) {
    EXPECT_EQ(CountOf(Items(app, folder)), 0) << folder;
  }
  IFolder* none = reinterpret_cast<IFolder*>(1);
  EXPECT_EQ(app->GetDefaultFolder(11, &none), E_INVALIDARG);
  EXPECT_EQ(none, nullptr);
}

TEST_F(OutlookApp, MakesItemsOfTheThreeKinds) {
  const ComPtr<IPOutlookApp> app = LoggedOn();
  const struct {
    INT folder;
    GUID iid;
  } kinds[] = {{olFolderCalendar, IID_IAppointment},
               {olFolderContacts, IContact::kIid},
               {olFolderTasks, IID_ITask}};
  for (const auto& kind : kinds) {
    ComPtr<IDispatch> added;
    EXPECT_EQ(Items(app, kind.folder)->Add(added.put()), S_OK) << kind.folder;
    ComPtr<IUnknown> known;
    EXPECT_EQ(added->QueryInterface(kind.iid, known.put_void()), S_OK) << kind.folder;
    EXPECT_EQ(CountOf(Items(app, kind.folder)), 0);
  }
}

TEST_F(OutlookApp, AnswersInvalidArgumentAndNullToAnUnknownOid) {
  const ComPtr<IPOutlookApp> app = LoggedOn();
  AddContact(app, u"Ada");
  for (const LONG oid : {0, -1, 2, 0x7FFFFFFF}) {
    IDispatch* item = reinterpret_cast<IDispatch*>(1);
    EXPECT_EQ(app->GetItemFromOid(oid, &item), E_INVALIDARG) << oid;
    EXPECT_EQ(item, nullptr);
  }
}

TEST_F(OutlookApp, RefusesNullOutParameters) {
  const ComPtr<IPOutlookApp> app = LoggedOn();
  EXPECT_EQ(app->GetDefaultFolder(olFolderContacts, nullptr), E_POINTER);
  EXPECT_EQ(app->GetItemFromOid(1, nullptr), E_POINTER);
  const ComPtr<IPOutlookItemCollection> items = Items(app);
  EXPECT_EQ(items->Add(nullptr), E_POINTER);
  EXPECT_EQ(items->get_Count(nullptr), E_POINTER);
  EXPECT_EQ(items->Item(1, nullptr), E_POINTER);
  const ComPtr<IContact> contact = NewContact(app);
  EXPECT_EQ(contact->get_Oid(nullptr), E_POINTER);
  EXPECT_EQ(contact->get_Birthday(nullptr), E_POINTER);
  EXPECT_EQ(contact->get_FirstName(nullptr), E_POINTER);
  EXPECT_EQ(contact->get_BodyInk(nullptr, nullptr), E_POINTER);
}

TEST_F(OutlookApp, ItsObjectsKnowTheirInterfaces) {
  const ComPtr<IPOutlookApp> app = LoggedOn();
  EXPECT_TRUE(app.query<IUnknown>());
  EXPECT_TRUE(app.query<IDispatch>());
  EXPECT_FALSE(app.query<IContact>());
  const ComPtr<IPOutlookItemCollection> items = Items(app);
  EXPECT_TRUE(items.query<IPOutlookItemCollection2>());
  EXPECT_TRUE(NewContact(app).query<IDispatch>());
}

TEST_F(OutlookApp, GivesItsSessionToToolsWhileLoggedOn) {
  SessionPtr session;
  EXPECT_EQ(SessionOf(nullptr, session), E_POINTER);
  EXPECT_EQ(SessionOf(NewApp().get(), session), E_FAIL);
  EXPECT_EQ(session, nullptr);
  EXPECT_EQ(SessionOf(LoggedOn().get(), session), S_OK);
  EXPECT_NE(session, nullptr);
}

TEST_F(OutlookApp, ItemsOutliveTheApplicationObject) {
  ComPtr<IPOutlookApp> app = LoggedOn();
  const ComPtr<IContact> added = NewContact(app);
  const ComPtr<IContact> deleted = ContactByOid(app, AddContact(app, u"Grace"));
  app.reset();
  EXPECT_EQ(Put(added, &IContact::put_FirstName, u"Ada"), S_OK);
  EXPECT_EQ(added->Save(), S_OK);
  EXPECT_EQ(deleted->Delete(), S_OK);
  EXPECT_EQ(StoredNames(), std::vector<std::u16string>{u"Ada"});
}

TEST_F(OutlookApp, ItemsCanBeReadButNotStoredAfterLogoff) {
  const ComPtr<IPOutlookApp> app = LoggedOn();
  const ComPtr<IPOutlookItemCollection> items = Items(app);
  ComPtr<IFolder> folder;
  ASSERT_EQ(app->GetDefaultFolder(olFolderContacts, folder.put()), S_OK);
  const ComPtr<IContact> contact = ContactByOid(app, AddContact(app, u"Ada"));
  EXPECT_EQ(app->Logoff(), S_OK);

  EXPECT_EQ(FirstName(contact), u"Ada");
  EXPECT_EQ(Put(contact, &IContact::put_FirstName, u"Grace"), S_OK);
  EXPECT_EQ(contact->Save(), E_FAIL);
  EXPECT_EQ(contact->Delete(), E_FAIL);
  IDispatch* item = nullptr;
  EXPECT_EQ(items->Add(&item), E_FAIL);
  INT count = 7;
  EXPECT_EQ(items->get_Count(&count), E_FAIL);
  EXPECT_EQ(count, 0);
  IPOutlookItemCollection* more = nullptr;
  EXPECT_EQ(folder->get_Items(&more), E_FAIL);
  EXPECT_EQ(StoredNames(), std::vector<std::u16string>{u"Ada"});
}

}  // namespace
}  // namespace ce::host::testing
