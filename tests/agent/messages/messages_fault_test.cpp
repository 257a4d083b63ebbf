#include <gtest/gtest.h>

#include "handheld/base/com_object.h"
#include "tests/agent/messages/messages_support.h"
#include "tests/support/fault_runs.h"

namespace corvane::testing {
namespace {

using namespace ce;
using host::StoredMessage;

// Their failure leaves a positive last error, which is no failure by its sign, or is ignored: what
// they were to make is missing from the document.
bool LeavesAGap(const std::string& call) {
  return call.starts_with("SysAllocString") || call.starts_with("GetDateFormat") ||
         call.starts_with("GetTimeFormat") || call == "FileTimeToSystemTime";
}

bool IsOfTheConnection(const std::string& call) {
  return call == "send" || call == "closesocket";
}

// The failure of a time is ignored, wherever it happens: a document may lack it, or its text.
std::string WithoutTimes(std::string document) {
  for (std::size_t at; (at = document.find("<Time")) != std::string::npos;) {
    const std::string end = document.compare(at, 7, "<Time/>") == 0 ? "/>" : "</Time>";
    document.erase(at, document.find(end, at) + end.size() - at);
  }
  return document;
}

class MessagesFaults : public MessagesTest {
 protected:
  void SetUp() override { Fill(); }
  void Fill() {
    filler_->box().Begin();
    StoredMessage message = TextMessage(u"hello");
    message.recipients = {{u"Ada", u"+491"}, {std::nullopt, std::nullopt}};
    filler_->Add(u"/Inbox", message);
    filler_->Add(u"/Inbox", TextMessage(u"two"));
    filler_->Add(u"/Inbox/Old", TextMessage(u"three"));
    EXPECT_EQ(filler_->box().Commit(), S_OK);
  }
  std::int64_t Left() { return filler_->Count(u"/Inbox") + filler_->Count(u"/Inbox/Old"); }
};

TEST_F(MessagesFaults, AnExportEndsHonestlyWhicheverCallFails) {
  const DownloadAnswer whole = Export();
  ASSERT_EQ(whole.status, S_OK);
  ASSERT_EQ(whole.documents.size(), 3u);
  const LONG objects = host::LiveComObjects();
  const auto calls = FailEachCall(
      ERROR_NOT_ENOUGH_MEMORY, Export, [&](const DownloadAnswer& answer, const std::string& call) {
        EXPECT_EQ(host::LiveComObjects(), objects);
        EXPECT_EQ(host::LiveMapiBuffers(), 0);
        if (IsOfTheConnection(call)) return;
        ASSERT_TRUE(answer.complete) << "every download ends with its trailer";
        EXPECT_EQ(answer.status, answer.returned);
        if (answer.status >= 0) {
          EXPECT_EQ(answer.documents.size(), whole.documents.size());
        }
        ASSERT_LE(answer.documents.size(), whole.documents.size());
        if (call.empty()) {
          EXPECT_EQ(answer.documents, whole.documents);
        }
        if (LeavesAGap(call)) return;
        for (std::size_t index = 0; index < answer.documents.size(); ++index) {
          EXPECT_EQ(WithoutTimes(Body(answer.documents[index])),
                    WithoutTimes(Body(whole.documents[index])));
        }
      });
  EXPECT_GT(calls, 200u);
}

TEST_F(MessagesFaults, ADeletionTellsWhetherTheMessagesAreGone) {
  const LONG objects = host::LiveComObjects();
  const auto calls = FailEachCall(
      ERROR_DISK_FULL, [] { return ExportTextMessages(nullptr); },
      [&](HRESULT status, const std::string& call) {
        EXPECT_EQ(host::LiveComObjects(), objects);
        EXPECT_EQ(host::LiveMapiBuffers(), 0);
        if (status >= 0) {
          EXPECT_EQ(Left(), 0);
        }
        if (call.empty()) {
          EXPECT_EQ(status, S_OK);
        }
        for (const auto* path : {u"/Inbox", u"/Inbox/Old"}) {
          EXPECT_EQ(filler_->box().Clear(filler_->Folder(path)), S_OK);
        }
        Fill();
      });
  EXPECT_GT(calls, 50u);
}

}  // namespace
}  // namespace corvane::testing
