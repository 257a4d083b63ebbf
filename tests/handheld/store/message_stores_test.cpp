#include "handheld/store/message_stores.h"

#include "handheld/store/store_check.h"
#include "handheld/store/store_error.h"
#include "tests/handheld/messages/mapi_support.h"
#include "tests/support/fault_runs.h"
#include "tests/support/store_sql.h"

namespace ce::host::testing {
namespace {

using ::testing::ElementsAre;

class MessageStoresTest : public HandheldTest {
 protected:
  MessageStoresTest() : filler_(std::make_unique<MessageFiller>(*handheld_)) {}

  MessageStores& box() { return filler_->box(); }
  void Reopen() {
    filler_.reset();
    filler_ = std::make_unique<MessageFiller>(*handheld_);
  }
  std::vector<std::u16string> Paths(std::int64_t store) {
    std::vector<MessageFolderInfo> folders;
    EXPECT_EQ(box().ListFolders(store, folders), S_OK);
    std::vector<std::u16string> paths;
    for (const MessageFolderInfo& folder : folders) paths.push_back(folder.path);
    return paths;
  }
  EntryIdBytes IdOf(std::u16string_view path) {
    EntryIdBytes id;
    EXPECT_EQ(box().FolderEntryId(filler_->Folder(path), id), S_OK);
    return id;
  }
  std::unique_ptr<MessageFiller> filler_;
};

TEST_F(MessageStoresTest, AHandheldComesWithTheStoreOfItsTelephone) {
  std::vector<MessageStoreInfo> stores;
  ASSERT_EQ(box().ListStores(stores), S_OK);
  ASSERT_EQ(stores.size(), 1u);
  EXPECT_EQ(stores[0].name, kSmsStoreName);
  EXPECT_THAT(Paths(stores[0].id), ElementsAre(u"/", u"/Inbox", u"/Outbox", u"/Sent Items",
                                               u"/Drafts", u"/Deleted Items"));
}

TEST_F(MessageStoresTest, TheFirstIdentifiersAreThoseThatItWouldMakeItself) {
  const auto made = [](std::int64_t id) {
    const EntryId entryId = MakeEntryId(MAPI_FOLDER, 1, id);
    return EntryIdBytes(entryId.begin(), entryId.end());
  };
  EXPECT_EQ(IdOf(u"/"), made(2));
  EXPECT_EQ(IdOf(u"/Deleted Items"), made(7));
  SpecialFolders special;
  ASSERT_EQ(box().GetSpecialFolders(filler_->SmsStore(), special), S_OK);
  EXPECT_EQ(special.subtree, IdOf(u"/"));
  EXPECT_EQ(special.drafts, IdOf(u"/Drafts"));
  EXPECT_EQ(special.wastebasket, IdOf(u"/Deleted Items"));
}

TEST_F(MessageStoresTest, AnotherStoreHasTheSameFolders) {
  std::int64_t store = 0;
  ASSERT_EQ(box().CreateStore(u"ActiveSync", store), S_OK);
  EXPECT_EQ(Paths(store), Paths(filler_->SmsStore()));
  SpecialFolders special;
  ASSERT_EQ(box().GetSpecialFolders(store, special), S_OK);
  std::int64_t drafts = 0;
  EntryIdBytes id;
  ASSERT_EQ(box().EnsureFolder(store, u"/Drafts", drafts), S_OK);
  ASSERT_EQ(box().FolderEntryId(drafts, id), S_OK);
  EXPECT_EQ(special.drafts, id);
}

TEST_F(MessageStoresTest, RefusesStoreNamesThatAreEmptyOrTaken) {
  std::int64_t store = 0;
  EXPECT_EQ(box().CreateStore(u"", store), E_INVALIDARG);
  EXPECT_EQ(box().CreateStore(kSmsStoreName, store), E_INVALIDARG);
  EXPECT_EQ(box().CreateStore(std::u16string_view(u"a\0b", 3), store), E_INVALIDARG);
  EXPECT_EQ(box().CreateStore(u"sms", store), S_OK);
}

TEST_F(MessageStoresTest, DeletesAStoreWithAllThatIsInIt) {
  filler_->AddMany(u"/Inbox/Old", 3);
  const EntryIdBytes id = *filler_->Messages(u"/Inbox/Old")[0].entryId;
  filler_->RemoveSmsStore();
  std::optional<std::int64_t> found;
  EXPECT_EQ(box().FindStore(kSmsStoreName, found), S_OK);
  EXPECT_FALSE(found);
  EXPECT_EQ(box().FindMessage(id, found), S_OK);
  EXPECT_FALSE(found);
  EXPECT_EQ(box().DeleteStore(1), E_INVALIDARG);
}

TEST_F(MessageStoresTest, MakesTheFoldersOfAPathOnce) {
  const std::int64_t old = filler_->Folder(u"/Inbox/Old/2007");
  EXPECT_EQ(filler_->Folder(u"/Inbox/Old/2007"), old);
  EXPECT_NE(filler_->Folder(u"/inbox"), filler_->Folder(u"/Inbox"));
  EXPECT_EQ(filler_->Folder(u"/"), 2);
}

TEST_F(MessageStoresTest, RefusesPathsThatNameNoFolder) {
  std::int64_t folder = 0;
  std::u16string deep;
  for (int i = 0; i < kDeepestFolder; ++i) deep += u"/x";
  const std::int64_t store = filler_->SmsStore();
  EXPECT_EQ(box().EnsureFolder(store, deep, folder), S_OK);
  deep += u"/x";
  for (const std::u16string& path :
       {std::u16string(), std::u16string(u"Inbox"), std::u16string(u"//"),
        std::u16string(u"/Inbox/"), std::u16string(u"/a\0b", 4), deep}) {
    EXPECT_EQ(box().EnsureFolder(store, path, folder), E_INVALIDARG);
  }
  EXPECT_EQ(box().EnsureFolder(99, u"/Inbox", folder), E_INVALIDARG);
}

TEST_F(MessageStoresTest, ListsNoFoldersOfATreeThatHasACircleOrIsTooDeep) {
  std::vector<MessageFolderInfo> folders;
  for (const char* sql :
       {"UPDATE message_folders SET parent = 3 WHERE id = 2",
        "UPDATE message_folders SET parent = NULL WHERE id = 2;"
        "UPDATE message_folders SET parent = 4 WHERE id = 3;"
        "UPDATE message_folders SET parent = 3 WHERE id = 4",
        "UPDATE message_folders SET parent = 2 WHERE id IN (3, 4);"
        "WITH RECURSIVE n (id) AS (SELECT 100 UNION ALL SELECT id + 1 FROM n"
        " WHERE id < 163) INSERT INTO message_folders"
        " SELECT id, 1, CASE id WHEN 100 THEN 3 ELSE id - 1 END, CAST(id AS BLOB), 'x' FROM n"}) {
    ASSERT_TRUE(corvane::testing::RunSql(*handheld_, sql)) << sql;
    EXPECT_EQ(box().ListFolders(1, folders), kStoreDamaged) << sql;
  }
  ASSERT_TRUE(corvane::testing::RunSql(*handheld_, "DELETE FROM message_folders WHERE id = 163"));
  EXPECT_EQ(box().ListFolders(1, folders), S_OK);
  EXPECT_EQ(folders.size(), 6u + 63u);
}

TEST_F(MessageStoresTest, DeletesAFolderWithAllThatIsBelowButNotTheTop) {
  filler_->AddMany(u"/Inbox/Old", 3);
  EXPECT_EQ(box().DeleteFolder(filler_->Folder(u"/Inbox")), S_OK);
  EXPECT_THAT(Paths(1),
              ElementsAre(u"/", u"/Outbox", u"/Sent Items", u"/Drafts", u"/Deleted Items"));
  EXPECT_EQ(box().DeleteFolder(2), E_INVALIDARG);
  EXPECT_EQ(box().DeleteFolder(99), E_INVALIDARG);
}

TEST_F(MessageStoresTest, GivesAMessageBackAsItWasInserted) {
  StoredMessage full = TextMessage(std::u16string(u"a\xDC00 \U0001F600\0b", 7));
  full.entryId = EntryIdBytes(70, 0xAB);
  full.recipients = {{u"Ada", u"+491"}, {std::nullopt, u""}, {u"", std::nullopt}};
  StoredMessage bare;
  bare.entryId.reset();
  filler_->Add(u"/Inbox", full);
  filler_->Add(u"/Inbox", bare);
  EXPECT_THAT(filler_->Messages(u"/Inbox"), ElementsAre(full, bare));
}

TEST_F(MessageStoresTest, RefusesAnIdentifierThatIsTaken) {
  StoredMessage message = TextMessage(u"x");
  message.entryId = EntryIdBytes{1, 2, 3};
  filler_->Add(u"/Inbox", message);
  const std::int64_t work = filler_->Folder(u"/Work");
  EXPECT_EQ(box().Insert(work, message), E_INVALIDARG);
  message.entryId = IdOf(u"/Inbox");
  EXPECT_EQ(box().Insert(work, message), E_INVALIDARG);
  EXPECT_EQ(box().Insert(99, TextMessage(u"x")), E_INVALIDARG);
  EXPECT_EQ(filler_->Count(u"/Work"), 0);
}

TEST_F(MessageStoresTest, FindsAMessageByItsIdentifier) {
  const std::int64_t id = filler_->Add(u"/Inbox", TextMessage(u"x"));
  std::optional<std::int64_t> found;
  EXPECT_EQ(box().FindMessage(*filler_->Messages(u"/Inbox")[0].entryId, found), S_OK);
  EXPECT_EQ(found, id);
  EXPECT_EQ(box().FindMessage({1}, found), S_OK);
  EXPECT_FALSE(found);
}

TEST_F(MessageStoresTest, ReadsAFolderInBatches) {
  filler_->AddMany(u"/Inbox", 10);
  filler_->AddMany(u"/Inbox/Old", 5);
  const std::int64_t inbox = filler_->Folder(u"/Inbox");
  std::vector<std::size_t> sizes;
  std::vector<std::u16string> texts;
  std::vector<NumberedMessage> batch;
  std::int64_t last = 0;
  do {
    ASSERT_EQ(box().Read(inbox, last, 4, batch), S_OK);
    sizes.push_back(batch.size());
    for (const NumberedMessage& message : batch) texts.push_back(*message.message.subject);
    if (!batch.empty()) last = batch.back().id;
  } while (!batch.empty());
  EXPECT_THAT(sizes, ElementsAre(4, 4, 2, 0));
  EXPECT_THAT(texts, ElementsAre(u"1", u"2", u"3", u"4", u"5", u"6", u"7", u"8", u"9", u"10"));
}

TEST_F(MessageStoresTest, DeletesSingleMessagesAndClearsFolders) {
  const std::int64_t id = filler_->Add(u"/Inbox", TextMessage(u"x"));
  filler_->AddMany(u"/Inbox", 2);
  filler_->AddMany(u"/Inbox/Old", 2);
  bool found = false;
  EXPECT_EQ(box().Delete(id, found), S_OK);
  EXPECT_TRUE(found);
  EXPECT_EQ(box().Delete(id, found), S_OK);
  EXPECT_FALSE(found);
  EXPECT_EQ(filler_->Count(u"/Inbox"), 2);
  EXPECT_EQ(box().Clear(filler_->Folder(u"/Inbox")), S_OK);
  EXPECT_EQ(filler_->Count(u"/Inbox"), 0);
  EXPECT_EQ(filler_->Count(u"/Inbox/Old"), 2);
}

TEST_F(MessageStoresTest, NeverGivesANumberAwayTwice) {
  const std::int64_t first = filler_->Add(u"/Inbox", TextMessage(u"x"));
  EXPECT_EQ(box().Clear(filler_->Folder(u"/Inbox")), S_OK);
  Reopen();
  EXPECT_GT(filler_->Add(u"/Inbox", TextMessage(u"x")), first);
}

TEST_F(MessageStoresTest, ABatchIsStoredByItsCommitInOneGo) {
  const std::int64_t inbox = filler_->Folder(u"/Inbox");
  const auto plan = FaultPlan::FailNthCall("sqlite3_step:commit", FaultPlan::kNever, 0);
  box().Begin();
  for (int i = 0; i < 5000; ++i) ASSERT_EQ(box().Insert(inbox, TextMessage(u"x")), S_OK);
  EXPECT_EQ(plan.calls(), 0u);
  EXPECT_EQ(box().Commit(), S_OK);
  EXPECT_EQ(plan.calls(), 1u);
  EXPECT_EQ(filler_->Count(u"/Inbox"), 5000);
}

TEST_F(MessageStoresTest, ABatchThatIsAbandonedOrDroppedIsUndone) {
  const std::int64_t inbox = filler_->Folder(u"/Inbox");
  box().Begin();
  ASSERT_EQ(box().Insert(inbox, TextMessage(u"x")), S_OK);
  box().Abandon();
  EXPECT_EQ(filler_->Count(u"/Inbox"), 0);
  box().Begin();
  ASSERT_EQ(box().Insert(inbox, TextMessage(u"x")), S_OK);
  Reopen();
  EXPECT_EQ(filler_->Count(u"/Inbox"), 0);
}

TEST_F(MessageStoresTest, ARefusalLeavesABatchAsItIs) {
  const std::int64_t inbox = filler_->Folder(u"/Inbox");
  StoredMessage taken = TextMessage(u"x");
  taken.entryId = EntryIdBytes{1};
  box().Begin();
  ASSERT_EQ(box().Insert(inbox, taken), S_OK);
  EXPECT_EQ(box().Insert(inbox, taken), E_INVALIDARG);
  EXPECT_EQ(box().Commit(), S_OK);
  EXPECT_EQ(filler_->Count(u"/Inbox"), 1);
}

TEST_F(MessageStoresTest, AFailureUndoesTheWholeBatchAndCommitTellsIt) {
  const std::int64_t inbox = filler_->Folder(u"/Inbox");
  StoredMessage message = TextMessage(u"x");
  message.recipients = {{u"Ada", u"+491"}};
  box().Begin();
  ASSERT_EQ(box().Insert(inbox, message), S_OK);
  {
    // Of the second message: the folder, the number twice, the message, then its recipient.
    const auto plan = FaultPlan::FailNthCall("sqlite3_step:messages", 5, ERROR_DISK_FULL);
    EXPECT_EQ(box().Insert(inbox, message), static_cast<HRESULT>(0x80070070));
  }
  EXPECT_EQ(box().Insert(inbox, message), static_cast<HRESULT>(0x80070070));
  EXPECT_EQ(box().Commit(), static_cast<HRESULT>(0x80070070));
  EXPECT_EQ(filler_->Count(u"/Inbox"), 0);
  EXPECT_EQ(box().Insert(inbox, message), S_OK) << "the batch has ended";
  EXPECT_EQ(filler_->Count(u"/Inbox"), 1);
}

TEST_F(MessageStoresTest, EachCallIsStoredExactlyWhenItSucceeded) {
  StoredMessage message = TextMessage(u"x");
  message.recipients = {{u"Ada", u"+491"}};
  const std::int64_t inbox = filler_->Folder(u"/Inbox");
  std::int64_t stored = 0;
  corvane::testing::FailEachCall(
      ERROR_DISK_FULL, [&] { return box().Insert(inbox, message); },
      [&](HRESULT status, const std::string& fired) {
        EXPECT_EQ(status, fired.empty() ? S_OK : static_cast<HRESULT>(0x80070070));
        if (Succeeded(status)) ++stored;
        EXPECT_EQ(filler_->Count(u"/Inbox"), stored);
      });
  EXPECT_EQ(CheckStore(*handheld_), std::vector<std::string>{});
}

TEST_F(MessageStoresTest, AStoreFromBeforeMessagesIsBroughtUpToDate) {
  filler_.reset();
  corvane::testing::TakeBackToTheFirstFormat(*handheld_);
  Reopen();
  filler_->AddMany(u"/Inbox", 1);
  EXPECT_EQ(filler_->Count(u"/Inbox"), 1);
  EXPECT_EQ(CheckStore(*handheld_), std::vector<std::string>{});
}

TEST_F(MessageStoresTest, SaysWhyAStoreCannotBeOpened) {
  std::unique_ptr<MessageStores> box;
  std::string problem;
  const auto plan = FaultPlan::FailCalls("sqlite3_open", ERROR_ACCESS_DENIED);
  EXPECT_EQ(MessageStores::Open(*handheld_, box, problem), E_ACCESSDENIED);
  EXPECT_NE(problem, "");
  EXPECT_EQ(box, nullptr);
}

}  // namespace
}  // namespace ce::host::testing
