// corvane-desktop against the real agent: text messages and calls.
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <signal.h>

#include <algorithm>

#include "tests/programs/tool_test.h"
#include "tests/support/call_filler.h"
#include "tests/support/ink_note_bytes.h"
#include "tests/support/message_filler.h"

namespace corvane::testing {
namespace {

using ce::host::StoredCall;
using ce::host::StoredMessage;
using ::testing::AllOf;
using ::testing::EndsWith;
using ::testing::HasSubstr;
using ::testing::StartsWith;

std::ptrdiff_t Lines(const std::string& text) {
  return std::count(text.begin(), text.end(), '\n');
}

class DesktopPhone : public ToolTest {
 protected:
  void SetUp() override { handheld_ = MakeHandheld(); }
  // Before the agent is started, or after it has ended.
  std::unique_ptr<ce::host::Handheld> Open() const {
    return ce::host::Handheld::Open(handheld_, "a test");
  }
  // One that came, in /Inbox, and one that was sent, in /Sent Items.
  void AddTwoMessages() const {
    const auto handheld = Open();
    MessageFiller filler(*handheld);
    filler.Add(u"/Inbox", TextMessage(u"Grüße & <Küsse>"));
    StoredMessage sent = TextMessage(u"On my way");
    sent.flags = 0x25;
    sent.recipients = {{u"Ada", u"+49222"}, {u"Bob", u"+49333"}};
    filler.Add(u"/Sent Items", sent);
  }
  void AddCalls(int count) const {
    const auto handheld = Open();
    CallFiller(*handheld).AddMany(count);
  }

  std::string handheld_;
};

TEST_F(DesktopPhone, PullsMessagesAsLinesOfJson) {
  AddTwoMessages();
  StartAgent(handheld_);
  const Ended pull = Desktop({"pull", "messages"});
  EXPECT_EQ(pull.code, 0);
  EXPECT_EQ(pull.err, "");
  EXPECT_EQ(Lines(pull.out), 2);
  EXPECT_THAT(pull.out, AllOf(StartsWith("{\"oid\":\"00000000"),
                              HasSubstr("\"folder\":\"/Inbox\",\"class\":\"sms\","
                                        "\"time\":\"2008-02-15T13:45:01Z\",\"flags\":[\"read\"],"
                                        "\"from\":{\"address\":\"+4912345\"},"
                                        "\"text\":\"Grüße & <Küsse>\"}\n")));
  EXPECT_THAT(pull.out, HasSubstr("\"folder\":\"/Sent Items\",\"class\":\"sms\","
                                  "\"time\":\"2008-02-15T13:45:01Z\","
                                  "\"flags\":[\"read\",\"submitted\",\"from-me\"],"
                                  "\"to\":[{\"address\":\"+49222\"},{\"address\":\"+49333\"}],"
                                  "\"text\":\"On my way\"}\n"));
  EXPECT_EQ(Desktop({"pull", "messages", "--format", "json"}).out, pull.out);
}

TEST_F(DesktopPhone, PullsMessagesAsOneDocument) {
  AddTwoMessages();
  StartAgent(handheld_);
  const std::string file = Path("messages.xml");
  const Ended pull = Desktop({"pull", "messages", "--format", "xml", "-o", file});
  EXPECT_EQ(pull.code, 0);
  EXPECT_EQ(pull.out, file + ": 2 text messages\n");
  const std::string document = directory_.Read("messages.xml");
  EXPECT_THAT(document, StartsWith("<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n<root>\n<SMS "));
  EXPECT_THAT(document, EndsWith("</SMS>\n</root>\n"));
  EXPECT_THAT(document, HasSubstr("<NOTES>Grüße &amp; &lt;Küsse&gt;</NOTES>"));
  EXPECT_THAT(document, HasSubstr("<Recipient><Number>+49333</Number></Recipient>"));
}

TEST_F(DesktopPhone, PullsMessagesAsABackup) {
  AddTwoMessages();
  StartAgent(handheld_);
  const Ended pull = Desktop({"pull", "messages", "--format", "smsbackup"});
  EXPECT_EQ(pull.code, 0);
  EXPECT_EQ(pull.err, "");
  EXPECT_THAT(pull.out, HasSubstr("<smses count=\"2\">\n"));
  EXPECT_THAT(pull.out, HasSubstr("date=\"1203083101000\" type=\"1\""));
  EXPECT_THAT(pull.out, HasSubstr("body=\"Grüße &amp; &lt;Küsse&gt;\""));
  EXPECT_THAT(pull.out, HasSubstr("address=\"+49222~+49333\""));
  EXPECT_THAT(pull.out, EndsWith("</smses>\n"));
}

TEST_F(DesktopPhone, PullsManyMessagesOnceEach) {
  {
    const auto handheld = Open();
    MessageFiller(*handheld).AddMany(u"/Inbox", 1'000);
  }
  StartAgent(handheld_);
  const Ended pull = Desktop({"pull", "messages"});
  EXPECT_EQ(pull.code, 0);
  EXPECT_EQ(Lines(pull.out), 1'000);
  EXPECT_THAT(pull.out, HasSubstr("\"text\":\"1000\""));
  EXPECT_THAT(Desktop({"pull", "messages", "--format", "smsbackup"}).out,
              HasSubstr("<smses count=\"1000\">\n"));
}

TEST_F(DesktopPhone, NamesAMultimediaMessage) {
  {
    const auto handheld = Open();
    StoredMessage multimedia = TextMessage(u"a picture");
    multimedia.messageClass = u"IPM.MMS";
    MessageFiller(*handheld).Add(u"/Inbox", multimedia);
  }
  StartAgent(handheld_);
  const Ended pull = Desktop({"pull", "messages"});
  EXPECT_EQ(pull.code, 0);
  EXPECT_THAT(pull.out, HasSubstr("\"folder\":\"/Inbox\",\"class\":\"mms\"}\n"));
  EXPECT_EQ(pull.err,
            "multimedia: the handheld sends nothing of it but its number and folder: 1 text "
            "message\n");
  const Ended each = Desktop({"pull", "messages", "-v"});
  EXPECT_THAT(each.err, StartsWith("message 00000000"));
  EXPECT_THAT(each.err, HasSubstr(" in /Inbox: multimedia: the handheld sends nothing of it but "));
  EXPECT_TRUE(IsOneLine(each.err)) << each.err;
  EXPECT_EQ(Desktop({"pull", "messages", "-q"}).err, "");
}

TEST_F(DesktopPhone, DeletesMessagesButForDrafts) {
  AddTwoMessages();
  {
    const auto handheld = Open();
    MessageFiller(*handheld).Add(u"/Drafts", TextMessage(u"not yet"));
  }
  StartAgent(handheld_);
  EXPECT_EQ(Desktop({"delete", "messages"}).code, 2);
  EXPECT_EQ(Lines(Desktop({"pull", "messages"}).out), 2);
  const Ended deleted = Desktop({"delete", "messages", "--yes"});
  EXPECT_EQ(deleted.code, 0);
  EXPECT_EQ(deleted.out, "all text messages deleted, but for drafts and deleted items\n");
  const Ended pull = Desktop({"pull", "messages"});
  EXPECT_EQ(pull.code, 0);
  EXPECT_EQ(pull.out, "");
  StopAgent(SIGTERM);
  const auto handheld = Open();
  EXPECT_EQ(MessageFiller(*handheld).Count(u"/Drafts"), 1);
}

TEST_F(DesktopPhone, SaysThatThereIsNoMessageStore) {
  {
    const auto handheld = Open();
    MessageFiller(*handheld).RemoveSmsStore();
  }
  StartAgent(handheld_);
  for (const Arguments& command :
       {Arguments{"pull", "messages"}, Arguments{"delete", "messages", "--yes"}}) {
    const Ended ended = Desktop(command);
    EXPECT_EQ(ended.code, 1);
    EXPECT_EQ(ended.out, "");
    EXPECT_EQ(ended.err,
              "corvane-desktop: the handheld has no store of text messages, as one without a "
              "telephone: 0x80004001 (not supported)\n");
  }
}

TEST_F(DesktopPhone, PullsCallsAsLinesOfJson) {
  directory_.Write("handheld/files/call.pwi", InkNote({"Call back"}));
  {
    const auto handheld = Open();
    StoredCall call = SampleCall();
    call.note = u"\\call.pwi";
    CallFiller(*handheld).Add(call);
  }
  StartAgent(handheld_);
  const Ended pull = Desktop({"pull", "calls"});
  EXPECT_EQ(pull.code, 0);
  EXPECT_EQ(pull.err, "");
  EXPECT_EQ(pull.out,
            "{\"number\":\"+4912345\",\"name\":\"Ada Lovelace\",\"type\":\"m\","
            "\"start\":\"2008-02-15T13:45:01Z\",\"end\":\"2008-02-15T13:46:01Z\","
            "\"outgoing\":false,\"connected\":true,\"missed\":false,\"roaming\":false,"
            "\"ended\":true,\"callerId\":\"available\",\"note\":\"Call back\"}\n");
}

TEST_F(DesktopPhone, PullsCallsInTheOtherForms) {
  AddCalls(42);
  StartAgent(handheld_);
  const Ended xml = Desktop({"pull", "calls", "--format", "xml"});
  EXPECT_EQ(xml.code, 0);
  EXPECT_EQ(Lines(xml.out), 2 + 42 + 1);
  EXPECT_THAT(xml.out, HasSubstr("<Number>42</Number>"));
  const Ended backup = Desktop({"pull", "calls", "--format", "smsbackup", "-o", Path("calls.xml")});
  EXPECT_EQ(backup.code, 0);
  EXPECT_EQ(backup.out, Path("calls.xml") + ": 42 calls\n");
  EXPECT_THAT(directory_.Read("calls.xml"), HasSubstr("<calls count=\"42\">\n"));
  EXPECT_EQ(Lines(directory_.Read("calls.xml")), 1 + 1 + 42 + 1);
}

TEST_F(DesktopPhone, KeepsAMissedCallInABackup) {
  {
    const auto handheld = Open();
    StoredCall call = SampleCall();
    call.kind = ce::IOM_MISSED;
    call.flags = ce::CALLLOG_ENDED;
    CallFiller(*handheld).Add(call);
  }
  StartAgent(handheld_);
  EXPECT_THAT(Desktop({"pull", "calls"}).out, HasSubstr("\"missed\":true"));
  const Ended backup = Desktop({"pull", "calls", "--format", "smsbackup", "-o", Path("calls.xml")});
  EXPECT_EQ(backup.code, 0);
  EXPECT_THAT(directory_.Read("calls.xml"), HasSubstr(" type=\"3\" "));
  StopAgent(SIGTERM);

  const std::string other = MakeHandheld("other");
  EXPECT_EQ(Device({"import", other, Path("calls.xml")}).code, 0);
  EXPECT_THAT(Device({"show", other, "calls", "--json"}).out, HasSubstr("\"missed\":true"));
}

TEST_F(DesktopPhone, SaysThatThereIsNoTelephone) {
  AddCalls(2);
  Open()->Set(u"Phone", ce::DWORD{0});
  StartAgent(handheld_);
  const Ended pull = Desktop({"pull", "calls"});
  EXPECT_EQ(pull.code, 1);
  EXPECT_EQ(pull.out, "");
  EXPECT_THAT(pull.err, StartsWith("corvane-desktop: the handheld has no telephone"));
}

TEST_F(DesktopPhone, RefusesWhatDoesNotGoTogether) {
  StartAgent(handheld_);
  const Arguments commands[] = {{"pull", "messages", "--format", "vcf"},
                                {"pull", "calls", "--format", "ics"},
                                {"pull", "contacts", "--format", "smsbackup"},
                                {"pull", "--format", "smsbackup", "tasks"},
                                {"pull", "messages", "--oid", "5"},
                                {"delete", "messages", "--oid", "5"},
                                {"delete", "calls", "--yes"}};
  for (const Arguments& command : commands) {
    const Ended ended = Desktop(command);
    EXPECT_EQ(ended.code, 2) << command[1] << ' ' << command[2];
    EXPECT_EQ(ended.out, "");
  }
}

}  // namespace
}  // namespace corvane::testing
