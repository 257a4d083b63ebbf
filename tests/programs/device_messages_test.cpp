// corvane-device as a person calls it: messages and calls in, shown, out and away.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <regex>

#include "tests/programs/tool_test.h"

namespace corvane::testing {
namespace {

using ::testing::EndsWith;
using ::testing::HasSubstr;
using ::testing::Not;
using ::testing::StartsWith;

constexpr char kCalls[] =
    "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n"
    "<calls count=\"3\">\n"
    "  <call number=\"+46705550101\" duration=\"75\" date=\"1203083101250\" type=\"1\" "
    "presentation=\"1\" contact_name=\"Åsa Björkman\" />\n"
    "  <call number=\"+46705550102\" duration=\"0\" date=\"1203083200000\" type=\"3\" "
    "presentation=\"1\" contact_name=\"(Unknown)\" />\n"
    "  <call number=\"+46705550103\" duration=\"10\" date=\"1203083300000\" type=\"2\" "
    "presentation=\"1\" contact_name=\"Nils\" />\n"
    "</calls>\n";

class DeviceMessages : public ToolTest {
 protected:
  std::string Shown(const std::string& handheld, const std::string& kind) const {
    const Ended shown = Device({"show", handheld, kind, "--list", "--json"});
    EXPECT_EQ(shown.code, 0) << shown.err;
    return shown.out;
  }
  // Lines of JSON without numbers, which differ between handhelds.
  std::string Exported(const std::string& handheld, const std::string& kind) const {
    const Ended out = Device({"export", handheld, kind, "--format", "json"});
    EXPECT_EQ(out.code, 0) << out.err;
    return out.out;
  }
  std::string Filled() const {
    const std::string handheld = MakeHandheld();
    const Ended in =
        Device({"import", handheld, Sample("phone-backup.xml"), File("calls.xml", kCalls)});
    EXPECT_EQ(in.code, 0) << in.err;
    return handheld;
  }
};

TEST_F(DeviceMessages, ImportsABackupAndKnowsItAgain) {
  const std::string handheld = MakeHandheld();
  const Arguments import{"import", handheld, Sample("phone-backup.xml"), File("calls.xml", kCalls)};
  const Ended first = Device(import);
  EXPECT_EQ(first.code, 0);
  EXPECT_THAT(first.out,
              HasSubstr("phone-backup.xml: 9 added, 0 changed, 0 unchanged, 0 failed; "));
  EXPECT_THAT(first.out, HasSubstr("calls.xml: 3 added, 0 changed, 0 unchanged, 0 failed; "));
  EXPECT_THAT(first.err, HasSubstr("phone-backup.xml:12: part: of a multimedia message"));
  const std::string before = Shown(handheld, "messages") + Shown(handheld, "calls");
  const Ended again = Device(import);
  EXPECT_EQ(again.code, 0);
  EXPECT_THAT(again.out,
              HasSubstr("phone-backup.xml: 0 added, 0 changed, 9 unchanged, 0 failed; "));
  EXPECT_THAT(again.out, HasSubstr("calls.xml: 0 added, 0 changed, 3 unchanged, 0 failed; "));
  EXPECT_EQ(Shown(handheld, "messages") + Shown(handheld, "calls"), before);
}

TEST_F(DeviceMessages, ShowsWhatWasSentReceivedAndDrafted) {
  const std::string handheld = Filled();
  const std::string messages = Device({"show", handheld, "messages", "--list"}).out;
  for (const char* row : {"/Inbox         2008-02-15 13:45 Åsa Björkman         Fika på",
                          "/Sent Items    2008-02-15 13:47 Åsa Björkman         Ja! Kommer",
                          "/Drafts        2008-03-31 21:46 Nils Öberg           Hej, jag",
                          "/Outbox        2008-03-31 21:51 Nils Öberg           Är du hemma?",
                          "/Inbox         2008-05-01 14:00 Åsa Björkman         Valborg Elden"})
    EXPECT_THAT(messages, HasSubstr(row));
  EXPECT_THAT(messages, EndsWith("\n9 messages\n"));
  const std::string calls = Device({"show", handheld, "calls"}).out;
  EXPECT_THAT(calls, HasSubstr(" missed   0:00:00   +46705550102\n"));
  EXPECT_THAT(calls, HasSubstr(" incoming 0:01:15   +46705550101         Åsa Björkman\n"));
  EXPECT_THAT(calls, EndsWith("\n3 calls\n"));
  EXPECT_THAT(Shown(handheld, "messages"), HasSubstr("\"class\":\"mms\""));
}

TEST_F(DeviceMessages, ShowsThreadsByPerson) {
  const std::string handheld = Filled();
  const std::string card = File("nils.vcf",
                                "BEGIN:VCARD\nVERSION:3.0\nN:Öberg;Nils Erik;;;\n"
                                "TEL;TYPE=CELL:0046 70 555 01 03\nEND:VCARD\n");
  ASSERT_EQ(Device({"import", handheld, card}).code, 0);
  const Ended threads = Device({"show", handheld, "messages"});
  EXPECT_EQ(threads.code, 0) << threads.err;
  EXPECT_THAT(threads.out, HasSubstr("\nNils Erik Öberg\n"));
  EXPECT_THAT(threads.out, HasSubstr("\n    13:47  I: Ja! Kommer"));
  EXPECT_THAT(threads.out, HasSubstr("[draft]\n"));
  EXPECT_THAT(threads.out, HasSubstr("\n9 messages in "));
}

TEST_F(DeviceMessages, ShowsNothingOfANewHandheld) {
  const std::string handheld = MakeHandheld();
  EXPECT_EQ(Device({"show", handheld, "messages", "--list"}).out, "0 messages\n");
  EXPECT_EQ(Device({"show", handheld, "calls"}).out, "0 calls\n");
  EXPECT_EQ(Shown(handheld, "messages"), "");
  EXPECT_THAT(Device({"export", handheld, "messages"}).out, HasSubstr("<smses count=\"0\""));
}

TEST_F(DeviceMessages, ExportsWhatImportsToTheSame) {
  const std::string from = Filled();
  for (const std::string format : {"smsbackup", "json"}) {
    const std::string to = MakeHandheld("to-" + format);
    for (const std::string kind : {"messages", "calls"}) {
      const std::string count = kind == "messages" ? "9 " : "3 ";
      const std::string file = Path(kind + "." + format);
      const Ended out = Device({"export", from, kind, "--format", format, "-o", file});
      EXPECT_EQ(out.code, 0);
      EXPECT_EQ(out.out, file + ": " + count + kind + "\n");
      EXPECT_EQ(Device({"import", from, file}).out,
                file + ": 0 added, 0 changed, " + count + "unchanged, 0 failed; 0 notices\n");
      EXPECT_EQ(Device({"import", to, file}).out,
                file + ": " + count + "added, 0 changed, 0 unchanged, 0 failed; 0 notices\n");
      EXPECT_EQ(Exported(to, kind), Exported(from, kind)) << format;
    }
  }
}

TEST_F(DeviceMessages, ExportsABackupUnlessAskedOtherwise) {
  const std::string handheld = Filled();
  EXPECT_THAT(Device({"export", handheld, "messages"}).out, HasSubstr("<smses count=\"9\""));
  EXPECT_THAT(Device({"export", handheld, "calls"}).out, HasSubstr("<calls count=\"3\""));
  EXPECT_THAT(Exported(handheld, "messages"), StartsWith("{\"folder\":\"/Inbox\","));
  const Ended cards = Device({"export", handheld, "contacts", "--format", "json"});
  EXPECT_EQ(cards.code, 2);
  EXPECT_EQ(cards.err, "corvane-device: --format json is of messages and calls only\n");
}

TEST_F(DeviceMessages, RemovesByTheNumbersThatItShows) {
  const std::string handheld = Filled();
  std::smatch found;
  const std::string messages = Shown(handheld, "messages");
  ASSERT_TRUE(std::regex_search(messages, found, std::regex("\"oid\":\"([0-9]+)\"")));
  const std::string first = found[1];
  const Ended some = Device({"remove", handheld, "messages", first, "999"});
  EXPECT_EQ(some.code, 3);
  EXPECT_THAT(some.out, EndsWith(" " + first + "\n"));
  EXPECT_EQ(some.err, "corvane-device: 999: no such message\n");
  EXPECT_THAT(Shown(handheld, "messages"), Not(HasSubstr("\"oid\":\"" + first + "\"")));
  EXPECT_EQ(Device({"remove", handheld, "messages", "--folder", "/Inbox"}).out,
            "removed 2 messages\n");
  EXPECT_EQ(Device({"remove", handheld, "messages", "--folder", "/No"}).code, 1);
  EXPECT_EQ(Device({"remove", handheld, "messages", "--all"}).out, "removed 6 messages\n");
  EXPECT_EQ(Device({"remove", handheld, "calls", "2"}).code, 0);
  EXPECT_EQ(Device({"remove", handheld, "calls", "--all"}).out, "removed 2 calls\n");
}

TEST_F(DeviceMessages, RemovesNothingWithoutAClearWord) {
  const std::string handheld = Filled();
  const std::string before = Shown(handheld, "messages") + Shown(handheld, "calls");
  const Arguments wrong[] = {{"messages"},
                             {"calls"},
                             {"messages", "8", "--all"},
                             {"messages", "--all", "--folder", "/Inbox"},
                             {"calls", "--folder", "/Inbox"},
                             {"messages", "8x"},
                             {"8", "--all"},
                             {"everything"}};
  for (const Arguments& words : wrong) {
    Arguments arguments{"remove", handheld};
    arguments.insert(arguments.end(), words.begin(), words.end());
    const Ended ended = Device(arguments);
    EXPECT_EQ(ended.code, 2) << ::testing::PrintToString(words);
    EXPECT_EQ(ended.out, "");
    EXPECT_TRUE(IsOneLine(ended.err)) << ended.err;
  }
  EXPECT_EQ(Shown(handheld, "messages") + Shown(handheld, "calls"), before);
}

}  // namespace
}  // namespace corvane::testing
