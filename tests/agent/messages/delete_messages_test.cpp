#include "agent/messages/folder_messages.h"

#include <gmock/gmock.h>

#include "handheld/base/fault.h"
#include "tests/agent/messages/fake_rows.h"
#include "tests/agent/messages/messages_support.h"

namespace corvane::testing {
namespace {

using namespace ce;
using host::FaultPlan;
using host::StoredMessage;
using ::testing::ElementsAre;

class DeleteMessages : public MessagesTest {
 protected:
  static HRESULT DeleteAll() { return ExportTextMessages(nullptr); }
};

TEST_F(DeleteMessages, EmptiesEveryFolderAtEveryDepth) {
  for (const auto* path : {u"/Inbox", u"/Inbox/Old", u"/Inbox/Old/2007", u"/Work"}) {
    filler_->AddMany(path, 3);
  }
  EXPECT_EQ(DeleteAll(), S_OK);
  for (const auto* path : {u"/Inbox", u"/Inbox/Old", u"/Inbox/Old/2007", u"/Work"}) {
    EXPECT_EQ(filler_->Count(path), 0);
  }
}

TEST_F(DeleteMessages, LeavesTheFoldersThatAnExportSkips) {
  filler_->AddMany(u"/Drafts", 2);
  filler_->AddMany(u"/Deleted Items", 2);
  EXPECT_EQ(DeleteAll(), S_OK);
  EXPECT_EQ(filler_->Count(u"/Drafts"), 2);
  EXPECT_EQ(filler_->Count(u"/Deleted Items"), 2);
}

TEST_F(DeleteMessages, DeletesMultimediaMessagesAsWell) {
  StoredMessage message = TextMessage(u"x");
  message.messageClass = u"IPM.MMS";
  filler_->Add(u"/Inbox", message);
  EXPECT_EQ(DeleteAll(), S_OK);
  EXPECT_EQ(filler_->Count(u"/Inbox"), 0);
}

TEST_F(DeleteMessages, LeavesOtherStoresAlone) {
  std::int64_t other = 0;
  ASSERT_EQ(filler_->box().CreateStore(u"ActiveSync", other), S_OK);
  std::int64_t inbox = 0;
  ASSERT_EQ(filler_->box().EnsureFolder(other, u"/Inbox", inbox), S_OK);
  ASSERT_EQ(filler_->box().Insert(inbox, TextMessage(u"mail")), S_OK);
  EXPECT_EQ(DeleteAll(), S_OK);
  std::int64_t count = 0;
  EXPECT_EQ(filler_->box().Count(inbox, count), S_OK);
  EXPECT_EQ(count, 1);
}

TEST_F(DeleteMessages, SucceedsWithoutMessages) {
  EXPECT_EQ(DeleteAll(), S_OK);
}

TEST_F(DeleteMessages, CannotDeleteWithoutAStoreNamedSms) {
  filler_->RemoveSmsStore();
  EXPECT_EQ(DeleteAll(), E_NOTIMPL);
}

TEST_F(DeleteMessages, LeavesAMessageWithoutAnEntryIdentifier) {
  StoredMessage message = TextMessage(u"stays");
  message.entryId.reset();
  filler_->AddMany(u"/Inbox", 2);
  filler_->Add(u"/Inbox", message);
  filler_->AddMany(u"/Inbox", 2);
  EXPECT_EQ(DeleteAll(), S_OK);
  ASSERT_EQ(filler_->Count(u"/Inbox"), 1);
  EXPECT_EQ(filler_->Messages(u"/Inbox")[0].subject, u"stays");
}

TEST_F(DeleteMessages, StopsAtTheFirstFailure) {
  filler_->AddMany(u"/Inbox", 5);
  filler_->AddMany(u"/Work", 1);
  {
    const auto plan = FaultPlan::FailNthCall("IMAPIFolder::DeleteMessages", 3, 0x80004005);
    EXPECT_EQ(DeleteAll(), E_FAIL);
  }
  EXPECT_EQ(filler_->Count(u"/Inbox"), 3);
  EXPECT_EQ(filler_->Count(u"/Work"), 1);
}

TEST_F(DeleteMessages, AnswersACommitThatFailed) {
  filler_->AddMany(u"/Inbox", 5);
  {
    const auto plan = FaultPlan::FailNthCall("sqlite3_step:commit", 1, ERROR_DISK_FULL);
    EXPECT_EQ(DeleteAll(), static_cast<HRESULT>(0x80070070));
  }
  EXPECT_EQ(filler_->Count(u"/Inbox"), 5);
}

TEST_F(DeleteMessages, SynchronisesOnceForManyMessages) {
  filler_->AddMany(u"/Inbox", 1000);
  const auto plan = FaultPlan::CountOnly("sqlite3_step:commit");
  EXPECT_EQ(DeleteAll(), S_OK);
  EXPECT_EQ(plan.calls(), 4u);
}

TEST_F(DeleteMessages, DeletesOneMessageACall) {
  filler_->AddMany(u"/Inbox", 7);
  const auto plan = FaultPlan::CountOnly("IMAPIFolder::DeleteMessages");
  EXPECT_EQ(DeleteAll(), S_OK);
  EXPECT_EQ(plan.calls(), 7u);
}

TEST_F(DeleteMessages, LogsItsSteps) {
  filler_->AddMany(u"/Inbox", 2);
  SwitchLogOn();
  EXPECT_EQ(DeleteAll(), S_OK);
  EXPECT_THAT(LogMessages(),
              ElementsAre("Store name SMS", "ProcessSMSFolder /Inbox", "ProcessSMSFolder /Outbox",
                          "ProcessSMSFolder /Sent Items", "Exit ProcessSMSFolder"));
}

// A folder that remembers what it was asked to delete.
class RecordingFolder final : public host::UnknownObject<IMAPIFolder> {
 public:
  HRESULT GetProps(const SPropTagArray*, DWORD, DWORD*, SPropValue**) override { return E_NOTIMPL; }
  HRESULT GetContentsTable(DWORD, IMAPITable**) override { return E_NOTIMPL; }
  HRESULT GetHierarchyTable(DWORD, IMAPITable**) override { return E_NOTIMPL; }
  HRESULT DeleteMessages(const ENTRYLIST* list, DWORD, IUnknown* progress, DWORD flags) override {
    EXPECT_EQ(list->cValues, 1u);
    EXPECT_EQ(progress, nullptr);
    EXPECT_EQ(flags, 0u);
    deleted.push_back(Hex({list->lpbin->lpb, list->lpbin->lpb + list->lpbin->cb}));
    return MAPI_W_PARTIAL_COMPLETION;
  }

  std::vector<std::string> deleted;

 private:
  ~RecordingFolder() override = default;
};

TEST_F(DeleteMessages, NamesTheFirstEntryIdentifierOfARow) {
  ComPtr<RecordingFolder> folder;
  folder.attach(new RecordingFolder);
  ComPtr<IMAPITable> table;
  table.attach(new FakeTable({{
      {BytesValue(PR_ENTRYID, {1, 2}), BytesValue(PR_ENTRYID, {3})},
      {LongValue(PR_MESSAGE_FLAGS, 1)},
      {LongValue(PR_MESSAGE_FLAGS, 1), BytesValue(PR_ENTRYID, {4})},
  }}));
  EXPECT_EQ(DeleteFolderMessages(nullptr, folder.get(), table.get()), S_OK);
  EXPECT_THAT(folder->deleted, ElementsAre("0102", "04"));
}

}  // namespace
}  // namespace corvane::testing
