#include "tests/agent/messages/messages_support.h"
#include "tests/support/download_faults.h"

namespace corvane::testing {
namespace {

using namespace ce;
using host::StoredMessage;

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
  static void ExpectNoMapiMemory(const std::string& = {}) { EXPECT_EQ(host::LiveMapiBuffers(), 0); }
  std::uint64_t Left() {
    return static_cast<std::uint64_t>(filler_->Count(u"/Inbox") + filler_->Count(u"/Inbox/Old"));
  }
};

TEST_F(MessagesFaults, AnExportEndsHonestlyWhicheverCallFails) {
  EXPECT_GT(
      ExpectHonestDownload({.run = Export, .compared = WithoutTimes, .after = ExpectNoMapiMemory}),
      200u);
}

TEST_F(MessagesFaults, ADeletionTellsWhetherTheMessagesAreGone) {
  ExpectHonestDeletion([] { return ExportTextMessages(nullptr); }, [&] { return Left(); },
                       [&] {
                         ExpectNoMapiMemory();
                         for (const auto* path : {u"/Inbox", u"/Inbox/Old"}) {
                           EXPECT_EQ(filler_->box().Clear(filler_->Folder(path)), S_OK);
                         }
                         Fill();
                       });
}

}  // namespace
}  // namespace corvane::testing
