#include <sys/wait.h>
#include <unistd.h>

#include <csignal>

#include "tests/handheld/messages/mapi_support.h"

namespace ce::host::testing {
namespace {

class MapiDelete : public MapiTest {
 protected:
  // Deletes the folder's messages at these positions, in one call.
  HRESULT Delete(std::u16string_view path, const std::vector<std::size_t>& positions) {
    auto messages = filler_->Messages(path);
    std::vector<SBinary> ids;
    for (const std::size_t at : positions) {
      EntryIdBytes& id = *messages.at(at).entryId;
      ids.push_back({static_cast<DWORD>(id.size()), id.data()});
    }
    const ENTRYLIST list{static_cast<DWORD>(ids.size()), ids.data()};
    return Folder(path)->DeleteMessages(&list, 0, nullptr, 0);
  }
};

TEST_F(MapiDelete, DeletesTheNamedMessagesWithTheirRecipients) {
  StoredMessage message = TextMessage(u"x");
  message.recipients = {{u"Ada", u"+491"}};
  filler_->Add(u"/Inbox", message);
  filler_->AddMany(u"/Inbox", 2);
  EXPECT_EQ(Delete(u"/Inbox", {0, 2}), S_OK);
  Logoff();
  const auto left = filler_->Messages(u"/Inbox");
  ASSERT_EQ(left.size(), 1u);
  EXPECT_EQ(left[0].subject, u"1");
  std::unique_ptr<Store> store;
  std::string problem;
  ASSERT_EQ(Store::Open(*handheld_, store, problem), S_OK);
  Statement recipients;
  ASSERT_EQ(store->Prepare("SELECT count(*) FROM message_recipients", recipients), S_OK);
  bool row = false;
  ASSERT_EQ(recipients.Step("test", row), S_OK);
  EXPECT_EQ(recipients.Integer(0), 0);
}

TEST_F(MapiDelete, AnswersPartialCompletionForWhatIsNotInTheFolder) {
  filler_->AddMany(u"/Inbox", 1);
  filler_->AddMany(u"/Work", 1);
  EntryIdBytes elsewhere = *filler_->Messages(u"/Work")[0].entryId;
  EntryIdBytes here = *filler_->Messages(u"/Inbox")[0].entryId;
  SBinary ids[] = {{static_cast<DWORD>(elsewhere.size()), elsewhere.data()},
                   {static_cast<DWORD>(here.size()), here.data()}};
  const ENTRYLIST list{2, ids};
  EXPECT_EQ(Folder(u"/Inbox")->DeleteMessages(&list, 0, nullptr, 0), MAPI_W_PARTIAL_COMPLETION);
  Logoff();
  EXPECT_EQ(filler_->Count(u"/Inbox"), 0);
  EXPECT_EQ(filler_->Count(u"/Work"), 1);
}

TEST_F(MapiDelete, RefusesAListThatIsNone) {
  const ComPtr<IMAPIFolder> folder = Folder(u"/Inbox");
  const ENTRYLIST broken{1, nullptr};
  const ENTRYLIST empty{0, nullptr};
  EXPECT_EQ(folder->DeleteMessages(nullptr, 0, nullptr, 0), E_INVALIDARG);
  EXPECT_EQ(folder->DeleteMessages(&broken, 0, nullptr, 0), E_INVALIDARG);
  EXPECT_EQ(folder->DeleteMessages(&empty, 0, nullptr, 0), S_OK);
}

TEST_F(MapiDelete, TheNextOtherCallStoresWhatIsPendingOrAnswersWhyNot) {
  filler_->AddMany(u"/Inbox", 2);
  const ComPtr<IMAPIFolder> folder = Folder(u"/Inbox");
  ASSERT_EQ(Delete(u"/Inbox", {0}), S_OK);
  {
    const auto plan = FaultPlan::FailCalls("sqlite3_step:commit", ERROR_DISK_FULL);
    ComPtr<IMAPITable> table;
    EXPECT_EQ(folder->GetHierarchyTable(0, table.put()), static_cast<HRESULT>(0x80070070));
  }
  EXPECT_EQ(filler_->Count(u"/Inbox"), 2);
  ASSERT_EQ(Delete(u"/Inbox", {0}), S_OK);
  ComPtr<IMAPITable> table;
  EXPECT_EQ(folder->GetHierarchyTable(0, table.put()), S_OK);
  EXPECT_EQ(filler_->Count(u"/Inbox"), 1);
}

TEST_F(MapiDelete, LogoffStoresWhatIsPendingOrAnswersWhyNot) {
  filler_->AddMany(u"/Inbox", 2);
  ASSERT_EQ(Delete(u"/Inbox", {0}), S_OK);
  {
    const auto plan = FaultPlan::FailCalls("sqlite3_step:commit", ERROR_DISK_FULL);
    EXPECT_EQ(session()->Logoff(0, 0, 0), static_cast<HRESULT>(0x80070070));
  }
  EXPECT_EQ(filler_->Count(u"/Inbox"), 2);
  Logoff();
  ASSERT_EQ(Delete(u"/Inbox", {0}), S_OK);
  Logoff();
  EXPECT_EQ(filler_->Count(u"/Inbox"), 1);
}

TEST_F(MapiDelete, WhatWasAnsweredSurvivesAKill) {
  filler_->AddMany(u"/Inbox", 5);
  filler_.reset();
  const pid_t pid = fork();
  if (pid == 0) {
    filler_ = std::make_unique<MessageFiller>(*handheld_);
    const bool deleted = Delete(u"/Inbox", {0, 1, 2}) == S_OK;
    ComPtr<IMAPITable> table;
    if (!deleted || Failed(Folder(u"/Inbox")->GetHierarchyTable(0, table.put()))) _exit(1);
    if (Delete(u"/Inbox", {0}) != S_OK) _exit(2);  // pending
    raise(SIGKILL);
  }
  int status = 0;
  ASSERT_EQ(waitpid(pid, &status, 0), pid);
  ASSERT_TRUE(WIFSIGNALED(status)) << WEXITSTATUS(status);
  filler_ = std::make_unique<MessageFiller>(*handheld_);
  EXPECT_EQ(filler_->Count(u"/Inbox"), 2);
}

}  // namespace
}  // namespace ce::host::testing
