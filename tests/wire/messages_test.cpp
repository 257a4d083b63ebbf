// Text messages: downloaded and deleted.
#include <gtest/gtest.h>

#include "handheld/store/message_stores.h"
#include "tests/support/message_filler.h"
#include "tests/support/wire/agent_process.h"

namespace corvane::testing {
namespace {

constexpr std::uint32_t kTextMessages = 5;

class MessagesWire : public WireTest {
 protected:
  // Fills the handheld; only before the agent is started.
  template <typename Fill>
  void Prepare(Fill fill) {
    const auto opened = ce::host::Handheld::Open(handheld().path(), "test");
    MessageFiller filler(*opened);
    fill(filler);
  }
  Download All() { return CallDownload("DownloadAllPIMRecords", Word(kTextMessages)); }
  std::uint32_t DeleteAll() {
    return CallBuffered({.function = "DeleteAllPIMRecords", .input = Word(kTextMessages)}).status;
  }
  static std::vector<std::size_t> Sizes(const Download& download) {
    std::vector<std::size_t> sizes;
    for (const std::string& document : download.documents) {
      sizes.push_back(CountElements(document, "SMS"));
    }
    return sizes;
  }
};
using Counts = std::vector<std::size_t>;

TEST_F(MessagesWire, AnswersADownloadByteForByte) {
  Prepare([](MessageFiller& filler) {
    ce::host::StoredMessage message = TextMessage(u"Hi");
    message.recipients = {{u"Me", u"+49222"}};
    filler.Add(u"/Inbox/Old", message);
  });
  RawConnection connection = Connect();
  connection.Send(Record(
      Invoke{.function = "DownloadAllPIMRecords", .input = Word(kTextMessages), .streamFlag = 1}
          .Body()));
  const std::string document =
      kDeclaration +
      "<root><SMS Oid=\"0000000000000005000000010000000000000009\"><Folder>/Inbox/Old</Folder>"
      "<Time>20080215T134501</Time><Flags>1</Flags><Sender>+4912345</Sender><NOTES>Hi</NOTES>"
      "<Recipients><Recipient><Number>+49222</Number></Recipient></Recipients></SMS></root>";
  EXPECT_EQ(connection.ReceiveToEnd(), Word(0) + Word(static_cast<std::uint32_t>(document.size())) +
                                           document + Word(0) + Word(0));
}

TEST_F(MessagesWire, SendsOnlyTheTrailerForAHandheldWithoutMessages) {
  RawConnection connection = Connect();
  connection.Send(Record(
      Invoke{.function = "DownloadAllPIMRecords", .input = Word(kTextMessages), .streamFlag = 1}
          .Body()));
  EXPECT_EQ(connection.ReceiveToEnd(), Word(0) + Word(0) + Word(0));
}

TEST_F(MessagesWire, SendsTheFirstOfAFolderAloneAndFortyToADocumentBehindIt) {
  Prepare([](MessageFiller& filler) {
    filler.AddMany(u"/Inbox", 42);
    filler.AddMany(u"/Sent Items", 1);
    filler.AddMany(u"/Drafts", 5);
  });
  const Download download = All();
  EXPECT_EQ(Sizes(download), (Counts{1, 40, 1, 1}));
  EXPECT_EQ(download.finalStatus, 0u);
  EXPECT_EQ(download.rest, "");
}

TEST_F(MessagesWire, RefusesBothRequestsWithoutAStoreForTextMessages) {
  Prepare([](MessageFiller& filler) { filler.RemoveSmsStore(); });
  const Download download = All();
  EXPECT_TRUE(download.documents.empty());
  EXPECT_EQ(download.finalStatus, kNotImplemented);
  EXPECT_EQ(download.rest, "");
  EXPECT_EQ(DeleteAll(), kNotImplemented);
}

TEST_F(MessagesWire, DeletesAllMessagesForGood) {
  Prepare([](MessageFiller& filler) {
    filler.AddMany(u"/Inbox", 300);
    filler.AddMany(u"/Inbox/Old", 3);
    filler.AddMany(u"/Deleted Items", 2);
  });
  EXPECT_EQ(DeleteAll(), 0u);
  StopAgent(9);  // what was answered is on the disk
  Prepare([](MessageFiller& filler) {
    EXPECT_EQ(filler.Count(u"/Inbox"), 0);
    EXPECT_EQ(filler.Count(u"/Inbox/Old"), 0);
    EXPECT_EQ(filler.Count(u"/Deleted Items"), 2);
  });
}

TEST_F(MessagesWire, AnswersADeletionWithTheHeaderAlone) {
  RawConnection connection = Connect();
  connection.Send(
      Record(Invoke{.function = "DeleteAllPIMRecords", .input = Word(kTextMessages)}.Body()));
  EXPECT_EQ(connection.Receive(20), Word(16) + Word(0) + Word(0) + Word(0) + Word(0));
  connection.FinishSending();
  EXPECT_EQ(connection.ReceiveToEnd(), "");
}

TEST_F(MessagesWire, RefusesWrongInputsBeforeAnythingIsDone) {
  Prepare([](MessageFiller& filler) { filler.AddMany(u"/Inbox", 1); });
  EXPECT_EQ(
      CallBuffered({.function = "DeleteAllPIMRecords", .input = Word(kTextMessages) + "x"}).status,
      kInvalidArgument);
  EXPECT_EQ(CallDownload("DownloadAllPIMRecords", Word(kTextMessages) + "x").finalStatus,
            kInvalidArgument);
  EXPECT_EQ(Sizes(All()), (Counts{1}));
}

TEST_F(MessagesWire, ServesTheNextRequestAfterAPeerThatLeavesMidway) {
  Prepare([](MessageFiller& filler) { filler.AddMany(u"/Inbox", 200); });
  {
    RawConnection connection = Connect();
    connection.Send(Record(
        Invoke{.function = "DownloadAllPIMRecords", .input = Word(kTextMessages), .streamFlag = 1}
            .Body()));
    connection.Receive(100);
  }
  EXPECT_EQ(Sizes(All()), (Counts{1, 40, 40, 40, 40, 39}));
}

}  // namespace
}  // namespace corvane::testing
