#include <thread>

#include "handheld/store/store_error.h"
#include "platform/status.h"
#include "tests/handheld/messages/mapi_support.h"
#include "tests/support/store_sql.h"

namespace ce::host::testing {
namespace {

using ::testing::ElementsAre;

class MapiSessionTest : public MapiTest {};

TEST(MapiLogon, IsRefusedOnAThreadThatHasNotInitialised) {
  ComPtr<IMAPISession> session;
  EXPECT_EQ(MAPILogonEx(0, nullptr, nullptr, 0, session.put()), MAPI_E_NOT_INITIALIZED);
  EXPECT_EQ(GetLastError(), ERROR_NOT_READY);
  EXPECT_FALSE(session);
}

TEST_F(MapiSessionTest, InitialisationCountsAndIsEachThreadsOwn) {
  EXPECT_EQ(MAPIInitialize(nullptr), S_OK);
  MAPIUninitialize();
  EXPECT_NE(session(), nullptr);
  HRESULT elsewhere = S_OK;
  std::thread([&] {
    ComPtr<IMAPISession> other;
    elsewhere = MAPILogonEx(0, nullptr, nullptr, 0, other.put());
  }).join();
  EXPECT_EQ(elsewhere, MAPI_E_NOT_INITIALIZED);
}

TEST_F(MapiSessionTest, FailuresLeaveAPositiveLastError) {
  for (const DWORD error : {DWORD{ERROR_DISK_FULL}, 0x80004005u}) {
    const auto plan = FaultPlan::FailCalls("MAPIInitialize", error);
    EXPECT_TRUE(Failed(MAPIInitialize(nullptr)));
    EXPECT_EQ(GetLastError(), error == ERROR_DISK_FULL ? ERROR_DISK_FULL : ERROR_GEN_FAILURE);
  }
  const auto plan = FaultPlan::FailCalls("sqlite3_open", ERROR_ACCESS_DENIED);
  ComPtr<IMAPISession> none;
  EXPECT_EQ(MAPILogonEx(0, nullptr, nullptr, 0, none.put()), E_ACCESSDENIED);
  EXPECT_EQ(GetLastError(), ERROR_ACCESS_DENIED);
}

TEST_F(MapiSessionTest, NeedsAHandheld) {
  Handheld* const handheld = Handheld::Current();
  Handheld::MakeCurrent(nullptr);
  ComPtr<IMAPISession> none;
  EXPECT_EQ(MAPILogonEx(0, nullptr, nullptr, 0, none.put()), E_FAIL);
  Handheld::MakeCurrent(handheld);
}

TEST_F(MapiSessionTest, ObjectsAnswerAFailureAfterLogoff) {
  const ComPtr<IMAPIFolder> folder = Folder(u"/Inbox");
  const ComPtr<IMAPITable> contents = Contents(u"/Inbox");
  const ComPtr<IMsgStore> kept(store());
  const ComPtr<IMAPISession> left(session());
  Logoff();
  ComPtr<IMAPITable> table;
  SRowSet* rows = nullptr;
  DWORD count = 0;
  EXPECT_EQ(left->GetMsgStoresTable(0, table.put()), E_FAIL);
  EXPECT_EQ(folder->GetHierarchyTable(0, table.put()), E_FAIL);
  EXPECT_EQ(contents->QueryRows(1, 0, &rows), E_FAIL);
  EXPECT_EQ(contents->GetRowCount(0, &count), E_FAIL);
  const BYTE byte = 1;
  ComPtr<IUnknown> entry;
  EXPECT_EQ(kept->OpenEntry(1, &byte, nullptr, 0, nullptr, entry.put()), E_FAIL);
  SBinary id{1, const_cast<BYTE*>(&byte)};
  const ENTRYLIST list{1, &id};
  EXPECT_EQ(folder->DeleteMessages(&list, 0, nullptr, 0), E_FAIL);
  EXPECT_EQ(left->Logoff(0, 0, 0), S_OK) << "a second time is no failure";
}

TEST_F(MapiSessionTest, ListsStoresWithNameAndIdentifier) {
  std::int64_t other = 0;
  ASSERT_EQ(filler_->box().CreateStore(u"ActiveSync", other), S_OK);
  ComPtr<IMAPITable> stores;
  ASSERT_EQ(session()->GetMsgStoresTable(0, stores.put()), S_OK);
  DWORD count = 0;
  EXPECT_EQ(stores->GetRowCount(0, &count), S_OK);
  EXPECT_EQ(count, 2u);
  std::vector<std::u16string> names;
  for (int i = 0; i < 2; ++i) {
    SRowSet* rows = nullptr;
    ASSERT_EQ(stores->QueryRows(1, 0, &rows), S_OK);
    ASSERT_EQ(rows->cRows, 1u);
    const SRow& row = rows->aRow[0];
    ASSERT_EQ(row.cValues, 2u);
    EXPECT_EQ(row.lpProps[0].ulPropTag, PR_DISPLAY_NAME_W);
    EXPECT_EQ(row.lpProps[1].ulPropTag, PR_ENTRYID);
    names.emplace_back(row.lpProps[0].Value.lpszW);
    ComPtr<IMsgStore> opened;
    const SBinary id = row.lpProps[1].Value.bin;
    EXPECT_EQ(session()->OpenMsgStore(0, id.cb, id.lpb, &IMsgStore::kIid, 0, opened.put()), S_OK);
    FreeProws(rows);
  }
  EXPECT_THAT(names, ElementsAre(u"SMS", u"ActiveSync"));
}

TEST_F(MapiSessionTest, RefusesToOpenWhatIsNoStore) {
  ComPtr<IMsgStore> none;
  EXPECT_EQ(session()->OpenMsgStore(0, 0, nullptr, nullptr, 0, none.put()), MAPI_E_INVALID_ENTRYID);
  const BYTE byte = 1;
  EXPECT_EQ(session()->OpenMsgStore(0, 1, &byte, nullptr, 0, none.put()), MAPI_E_NOT_FOUND);
  EXPECT_EQ(session()->OpenMsgStore(0, 1, &byte, &IMessage::kIid, 0, none.put()), E_NOINTERFACE);
  EXPECT_FALSE(none);
}

TEST_F(MapiSessionTest, AnswersStorePropertiesAndErrorsForWhatItLacks) {
  SpecialFolders special;
  ASSERT_EQ(filler_->box().GetSpecialFolders(filler_->SmsStore(), special), S_OK);
  const std::vector<DWORD> wanted = {PR_IPM_SUBTREE_ENTRYID, PR_CE_IPM_DRAFTS_ENTRYID,
                                     PR_IPM_WASTEBASKET_ENTRYID};
  const SPropTagArray tags = Tags(wanted);
  DWORD count = 0;
  SPropValue* values = nullptr;
  ASSERT_EQ(store()->GetProps(&tags, MAPI_UNICODE, &count, &values), S_OK);
  ASSERT_EQ(count, 3u);
  EXPECT_EQ(BytesOf(values[0]), special.subtree);
  EXPECT_EQ(BytesOf(values[1]), special.drafts);
  EXPECT_EQ(BytesOf(values[2]), special.wastebasket);
  EXPECT_EQ(MAPIFreeBuffer(values), 0u);

  Logoff();
  special.drafts.reset();
  ASSERT_EQ(filler_->box().SetSpecialFolders(filler_->SmsStore(), special), S_OK);
  ASSERT_EQ(store()->GetProps(&tags, MAPI_UNICODE, &count, &values), MAPI_W_ERRORS_RETURNED);
  EXPECT_EQ(values[0].ulPropTag, PR_IPM_SUBTREE_ENTRYID);
  EXPECT_EQ(values[1].ulPropTag, 0x8104000Au);
  EXPECT_EQ(values[1].Value.err, MAPI_E_NOT_FOUND);
  EXPECT_EQ(values[2].ulPropTag, PR_IPM_WASTEBASKET_ENTRYID);
  MAPIFreeBuffer(values);
  EXPECT_EQ(store()->GetProps(nullptr, 0, &count, &values), E_INVALIDARG);
  EXPECT_EQ(values, nullptr);
}

TEST_F(MapiSessionTest, OpensFoldersAndMessagesForWhatTheyAre) {
  filler_->Add(u"/Inbox", TextMessage(u"x"));
  const EntryIdBytes id = *filler_->Messages(u"/Inbox")[0].entryId;
  ComPtr<IUnknown> entry;
  DWORD type = 0;
  const auto bytes = static_cast<DWORD>(id.size());
  EXPECT_EQ(store()->OpenEntry(bytes, id.data(), nullptr, 0, &type, entry.put()), S_OK);
  EXPECT_EQ(type, MAPI_MESSAGE);
  EXPECT_TRUE(entry.query<IMessage>());
  EXPECT_TRUE(entry.query<IMAPIProp>());
  EXPECT_FALSE(entry.query<IMAPIFolder>());
  EXPECT_FALSE(entry.query<IDispatch>());
  EXPECT_EQ(store()->OpenEntry(bytes, id.data(), &IMAPIFolder::kIid, 0, nullptr, entry.put()),
            E_NOINTERFACE);
  EXPECT_TRUE(Folder(u"/Inbox").query<IMAPIContainer>());
}

TEST_F(MapiSessionTest, OpensNothingOfAnotherStore) {
  std::int64_t other = 0;
  std::int64_t inbox = 0;
  EntryIdBytes id;
  ASSERT_EQ(filler_->box().CreateStore(u"ActiveSync", other), S_OK);
  ASSERT_EQ(filler_->box().EnsureFolder(other, u"/Inbox", inbox), S_OK);
  ASSERT_EQ(filler_->box().FolderEntryId(inbox, id), S_OK);
  ComPtr<IUnknown> entry;
  EXPECT_EQ(store()->OpenEntry(static_cast<DWORD>(id.size()), id.data(), nullptr, 0, nullptr,
                               entry.put()),
            MAPI_E_NOT_FOUND);
  EXPECT_EQ(store()->OpenEntry(0, id.data(), nullptr, 0, nullptr, entry.put()),
            MAPI_E_INVALID_ENTRYID);
  EXPECT_FALSE(entry);
}

TEST_F(MapiSessionTest, AnswersAFoldersOwnProperties) {
  const std::vector<DWORD> wanted = {PR_DISPLAY_NAME_W, PR_SUBJECT_W};
  const SPropTagArray tags = Tags(wanted);
  DWORD count = 0;
  SPropValue* values = nullptr;
  ASSERT_EQ(Folder(u"/Sent Items")->GetProps(&tags, MAPI_UNICODE, &count, &values),
            MAPI_W_ERRORS_RETURNED);
  EXPECT_EQ(values[0].Value.lpszW, std::u16string(u"Sent Items"));
  EXPECT_EQ(PROP_TYPE(values[1].ulPropTag), PT_ERROR);
  MAPIFreeBuffer(values);
}

TEST_F(MapiSessionTest, ReadsOneSnapshotWhateverOthersWrite) {
  filler_->AddMany(u"/Inbox", 2);
  const ComPtr<IMAPITable> table = Contents(u"/Inbox");
  filler_->AddMany(u"/Inbox", 1);
  EXPECT_THAT(Texts(table.get()), ElementsAre(u"1", u"2"));
  Logoff();
  EXPECT_THAT(Texts(Contents(u"/Inbox").get()), ElementsAre(u"1", u"2", u"1"));
}

TEST_F(MapiSessionTest, AFolderBelowItselfOrTooDeepHasNoHierarchy) {
  IMAPITable* none = reinterpret_cast<IMAPITable*>(1);
  std::u16string deep;
  for (int i = 0; i < 64; ++i) deep += u"/x";
  const ComPtr<IMAPIFolder> deepest = Folder(deep);
  ComPtr<IMAPITable> table;
  EXPECT_EQ(deepest->GetHierarchyTable(0, table.put()), S_OK);
  const std::string below = std::to_string(filler_->Folder(deep));
  Logoff();
  ASSERT_TRUE(corvane::testing::RunSql(
      *handheld_, "INSERT INTO message_folders VALUES (999, 1, " + below + ", x'09', 'x')"));
  EXPECT_EQ(Open<IMAPIFolder>({9})->GetHierarchyTable(0, &none), kStoreDamaged);
  EXPECT_EQ(none, nullptr);
  Logoff();
  ASSERT_TRUE(corvane::testing::RunSql(*handheld_,
                                       "UPDATE message_folders SET parent = 4 WHERE id = 3;"
                                       "UPDATE message_folders SET parent = 3 WHERE id = 4"));
  EntryIdBytes inbox;
  ASSERT_EQ(filler_->box().FolderEntryId(3, inbox), S_OK);
  EXPECT_EQ(Open<IMAPIFolder>(inbox)->GetHierarchyTable(0, &none), kStoreDamaged);
  EXPECT_EQ(Open<IMAPIFolder>(inbox)->GetContentsTable(0, table.put()), S_OK);
}

}  // namespace
}  // namespace ce::host::testing
