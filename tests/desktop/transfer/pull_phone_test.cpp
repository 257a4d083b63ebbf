#include "desktop/commands/commands_pull.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <sstream>

#include "common/formats/backup/sms_backup.h"
#include "common/formats/json/message_json.h"
#include "desktop/records/phone_records.h"
#include "tests/desktop/fixtures.h"

namespace desktop::testing {
namespace {

using ::testing::HasSubstr;

const std::string kFirstMessage =
    "<SMS Oid=\"0A\"><Folder>/Inbox</Folder><Time>20080215T134501</Time><Flags>1</Flags>"
    "<Sender>+491</Sender><NOTES>Hi &amp; bye</NOTES></SMS>";
const std::string kSecondMessage =
    "<SMS Oid=\"0B\"><Folder>/Sent Items</Folder><Flags>37</Flags><NOTES>x</NOTES><Recipients>"
    "<Recipient><Number>+492</Number></Recipient></Recipients></SMS>";
const std::string kMultimedia = "<SMS Oid=\"0C\"><Folder>/Inbox</Folder></SMS>";
const std::string kCall =
    "<Call><Number>+491</Number><Outgoing>FALSE</Outgoing><Connected>TRUE</Connected>"
    "<Roam>FALSE</Roam><Ended>TRUE</Ended><CID>2</CID><Start>20080215T134501</Start>"
    "<End>20080215T134601</End></Call>";
const std::string kNoMore = Word(0) + Word(0);
const std::string kTwoMessages =
    Word(0) + Counted(Document(kFirstMessage)) + Counted(Document(kSecondMessage)) + kNoMore;
constexpr char kFirstLine[] =
    "{\"oid\":\"0A\",\"folder\":\"/Inbox\",\"class\":\"sms\",\"time\":\"2008-02-15T13:45:01Z\","
    "\"flags\":[\"read\"],\"from\":{\"address\":\"+491\"},\"text\":\"Hi & bye\"}\n";

std::string MessagesXml(const std::string& lines) {
  return "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n<root>\n" + lines + "</root>\n";
}

class PullPhoneTest : public CommandTest {
 protected:
  PullPhoneTest() { options_.kind = RecordKind::kMessages; }

  int Run(const ConnectionOptions& connection) {
    return Pull(connection, options_, console_.console);
  }
  int RunAgainst(const std::string& answer) {
    FakeAgent agent({Answer(answer)});
    return Run(agent.options());
  }
  void ToFile() { options_.output = directory_ / "out"; }

  PullOptions options_;
};

TEST_F(PullPhoneTest, AsksForAllOfTheKind) {
  const std::pair<RecordKind, std::uint32_t> kinds[] = {{RecordKind::kCalls, 4},
                                                        {RecordKind::kMessages, 5}};
  for (const auto& [kind, number] : kinds) {
    SeenRequest seen;
    FakeAgent agent({[&seen](Peer& peer) {
      seen = ReadRequest(peer.ReceiveCounted());
      peer.Send(Word(0) + kNoMore);
    }});
    options_.kind = kind;
    EXPECT_EQ(Run(agent.options()), kDone);
    agent.Join();
    EXPECT_EQ(seen.function, "DownloadAllPIMRecords");
    EXPECT_EQ(seen.input, Word(number));
    EXPECT_EQ(seen.streamed, 1U);
  }
}

TEST_F(PullPhoneTest, WritesALineOfJsonForEachMessage) {
  EXPECT_EQ(RunAgainst(kTwoMessages), kDone);
  EXPECT_EQ(out(), std::string(kFirstLine) +
                       "{\"oid\":\"0B\",\"folder\":\"/Sent Items\",\"class\":\"sms\","
                       "\"flags\":[\"read\",\"submitted\",\"from-me\"],"
                       "\"to\":[{\"address\":\"+492\"}],\"text\":\"x\"}\n");
  EXPECT_EQ(err(), "");
}

TEST_F(PullPhoneTest, WritesALineOfJsonForEachCall) {
  options_.kind = RecordKind::kCalls;
  EXPECT_EQ(RunAgainst(Word(0) + Counted(Document(kCall + kCall)) + kNoMore), kDone);
  const std::string line =
      "{\"number\":\"+491\",\"start\":\"2008-02-15T13:45:01Z\",\"end\":\"2008-02-15T13:46:01Z\","
      "\"outgoing\":false,\"connected\":true,\"missed\":false,\"roaming\":false,\"ended\":true,"
      "\"callerId\":\"available\"}\n";
  EXPECT_EQ(out(), line + line);
}

TEST_F(PullPhoneTest, MergesTheDocumentsUnderOneRootWithTheirBytes) {
  options_.format = RecordFormat::kXml;
  EXPECT_EQ(RunAgainst(kTwoMessages), kDone);
  EXPECT_EQ(out(), MessagesXml(kFirstMessage + "\n" + kSecondMessage + "\n"));
}

TEST_F(PullPhoneTest, WritesABackupThatReadsAsTheSameMessages) {
  options_.format = RecordFormat::kSmsBackup;
  EXPECT_EQ(RunAgainst(kTwoMessages), kDone);
  EXPECT_THAT(out(), HasSubstr("<smses count=\"2\">\n"));
  std::vector<formats::TextMessage> messages;
  formats::ItemSink sink;
  sink.message = [&](const formats::TextMessage& message, std::size_t) {
    messages.push_back(message);
  };
  const auto notices = formats::ReadBackup(out(), sink);
  EXPECT_TRUE(notices.empty());
  ASSERT_EQ(messages.size(), 2U);
  EXPECT_EQ(formats::MessageToJson(messages[0], "0A") + "\n", kFirstLine);
  EXPECT_EQ(messages[1].folder, "/Sent Items");
  EXPECT_EQ(messages[1].to.at(0).address, "+492");
}

TEST_F(PullPhoneTest, WritesABackupThatReadsAsTheSameCalls) {
  options_.kind = RecordKind::kCalls;
  options_.format = RecordFormat::kSmsBackup;
  ToFile();
  EXPECT_EQ(RunAgainst(Word(0) + Counted(Document(kCall)) + kNoMore), kDone);
  const std::string backup = directory_.Read("out");
  EXPECT_THAT(backup, HasSubstr("<calls count=\"1\">\n"));
  std::vector<formats::Call> calls;
  formats::ItemSink sink;
  sink.call = [&](const formats::Call& call, std::size_t) { calls.push_back(call); };
  const auto notices = formats::ReadBackup(backup, sink);
  EXPECT_TRUE(notices.empty());
  ASSERT_EQ(calls.size(), 1U);
  EXPECT_EQ(calls[0], CallFromXml(ParseRecords(Document(kCall)).at(0).element));
}

TEST_F(PullPhoneTest, WritesAnEmptyFormForNoMessages) {
  const std::pair<RecordFormat, std::string> cases[] = {
      {RecordFormat::kJson, ""},
      {RecordFormat::kXml, MessagesXml("")},
      {RecordFormat::kSmsBackup,
       "<?xml version='1.0' encoding='UTF-8' standalone='yes' ?>\n<smses count=\"0\">\n"
       "</smses>\n"}};
  ToFile();
  for (const auto& [format, content] : cases) {
    options_.format = format;
    directory_.Write("out", "before");
    EXPECT_EQ(RunAgainst(Word(0) + kNoMore), kDone);
    EXPECT_EQ(directory_.Read("out"), content);
  }
  EXPECT_THAT(out(), HasSubstr("out: 0 text messages\n"));
}

TEST_F(PullPhoneTest, SaysHowManyAreInTheFile) {
  ToFile();
  EXPECT_EQ(RunAgainst(kTwoMessages), kDone);
  EXPECT_EQ(out(), (directory_ / "out").string() + ": 2 text messages\n");
  EXPECT_EQ(Names(directory_), std::vector<std::string>{"out"});
}

TEST_F(PullPhoneTest, CountsMultimediaMessagesAndKeepsWhatThereIs) {
  EXPECT_EQ(RunAgainst(Word(0) + Counted(Document(kMultimedia + kFirstMessage)) + kNoMore), kDone);
  EXPECT_EQ(err(),
            "multimedia: the handheld sends nothing of it but its number and folder: 1 text "
            "message\n");
  EXPECT_EQ(out(),
            std::string("{\"oid\":\"0C\",\"folder\":\"/Inbox\",\"class\":\"mms\"}\n") + kFirstLine);
}

TEST_F(PullPhoneTest, NamesEachMultimediaMessageWhenToldSo) {
  console_.console.verbosity = Verbosity::kAll;
  EXPECT_EQ(RunAgainst(Word(0) + Counted(Document(kMultimedia + kFirstMessage)) + kNoMore), kDone);
  EXPECT_EQ(err(),
            "message 0C in /Inbox: multimedia: the handheld sends nothing of it but its number and "
            "folder\n");
}

TEST_F(PullPhoneTest, LeavesOutWhatIsNoneOfTheKind) {
  EXPECT_EQ(RunAgainst(Word(0) + Counted(Document(kCall + kFirstMessage)) + kNoMore), kDone);
  EXPECT_EQ(err(), "left out: Call is no text message\n");
  EXPECT_EQ(out(), kFirstLine);
}

TEST_F(PullPhoneTest, SaysThatThereIsNoMessageStore) {
  ToFile();
  directory_.Write("out", "before");
  EXPECT_EQ(RunAgainst(Word(0) + Word(0) + Word(0x80004001)), kFailed);
  EXPECT_EQ(err(),
            "corvane-desktop: the handheld has no store of text messages, as one without a "
            "telephone: 0x80004001 (not supported)\n");
  EXPECT_EQ(directory_.Read("out"), "before");
  EXPECT_EQ(Names(directory_), std::vector<std::string>{"out"});
}

TEST_F(PullPhoneTest, SaysThatThereIsNoTelephoneOrNoConverter) {
  options_.kind = RecordKind::kCalls;
  options_.format = RecordFormat::kXml;
  EXPECT_EQ(RunAgainst(Word(0) + Word(0) + Word(0x80004001)), kFailed);
  EXPECT_THAT(err(), HasSubstr("the handheld has no telephone, or cannot convert the note of a "
                               "call: 0x80004001"));
  EXPECT_EQ(out(), "");
  EXPECT_EQ(RunAgainst(Word(0) + Counted(Document(kCall)) + Word(0) + Word(0x80004001)),
            kPartlyDone);
  EXPECT_THAT(err(), HasSubstr("partial: the handheld cannot convert the note of a call: 0x8000"));
  EXPECT_EQ(out(), MessagesXml(kCall + "\n"));
}

TEST_F(PullPhoneTest, KeepsCompleteDocumentsWhenCutOffAtEachByte) {
  ToFile();
  const std::size_t first = 4 + Counted(Document(kFirstMessage)).size();
  const std::size_t second = first + Counted(Document(kSecondMessage)).size();
  for (const RecordFormat format :
       {RecordFormat::kJson, RecordFormat::kXml, RecordFormat::kSmsBackup}) {
    options_.format = format;
    for (std::size_t length = 0; length < kTwoMessages.size(); ++length) {
      directory_.Write("out", "before");
      const int code = RunAgainst(kTwoMessages.substr(0, length));
      EXPECT_EQ(code, length < first ? kFailed : kPartlyDone) << length;
      EXPECT_EQ(directory_.Read("out"), "before") << length;
      const std::filesystem::path partial = directory_ / "out.partial";
      EXPECT_EQ(std::filesystem::exists(partial), length >= first) << length;
      if (length < first) continue;
      EXPECT_EQ(directory_.Read(partial).find("x</NOTES>") != std::string::npos,
                format == RecordFormat::kXml && length >= second)
          << length;
      std::filesystem::remove(partial);
    }
  }
}

TEST_F(PullPhoneTest, WritesTheRecordsAsTheyComeToTheStandardOutput) {
  FakeAgent agent({[](Peer& peer) {
    peer.ReceiveCounted();
    peer.Send(Word(0) + Counted(Document(kFirstMessage)));
  }});
  EXPECT_EQ(Run(agent.options()), kPartlyDone);
  EXPECT_EQ(out(), kFirstLine);
  EXPECT_THAT(err(), HasSubstr("the 1 text messages received until then have been written\n"));
}

TEST_F(PullPhoneTest, GivesUpOnADocumentThatIsNone) {
  EXPECT_EQ(RunAgainst(Word(0) + Counted("<root>") + kNoMore), kFailed);
  EXPECT_THAT(err(), HasSubstr("the answer makes no sense: document 1: line 1: "));
}

TEST_F(PullPhoneTest, EndsWhenTheStandardOutputHasGone) {
  console_.out.setstate(std::ios::badbit);
  EXPECT_EQ(RunAgainst(kTwoMessages), kFailed);
  EXPECT_THAT(err(), HasSubstr("cannot write to the standard output"));
}

TEST_F(PullPhoneTest, SaysThatNobodyListens) {
  EXPECT_EQ(Run(NobodyThere()), kFailed);
  EXPECT_THAT(err(), HasSubstr("is corvane running there?"));
}

}  // namespace
}  // namespace desktop::testing
