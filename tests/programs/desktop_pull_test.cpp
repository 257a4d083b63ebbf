// corvane-desktop against the real agent: what it pulls, and the agent's clock, log and end.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <signal.h>

#include <filesystem>

#include "tests/programs/tool_test.h"

namespace corvane::testing {
namespace {

using ::testing::AllOf;
using ::testing::EndsWith;
using ::testing::HasSubstr;
using ::testing::MatchesRegex;
using ::testing::Not;
using ::testing::StartsWith;

class DesktopPull : public ToolTest {
 protected:
  // Starts the agent on a handheld with all samples. Only a Japanese one sends phonetic names.
  std::string StartWithSamples() {
    const std::string handheld = MakeHandheld("handheld", "ja-JP");
    EXPECT_EQ(Device({"import", handheld, Sample("people.vcf"), Sample("old-phone.vcf")}).code, 0);
    contacts_ = Contacts(handheld);
    StartAgent(handheld);
    return handheld;
  }
  std::string contacts_;  // of that handheld, as JSON
};

TEST_F(DesktopPull, WritesVCardsThatReadAsTheSameContacts) {
  StartWithSamples();
  for (const std::string version : {"3.0", "4.0"}) {
    const std::string file = Path("out" + version + ".vcf");
    const Ended pull = Desktop({"pull", "contacts", "--vcard-version", version, "-o", file});
    EXPECT_EQ(pull.code, 0);
    EXPECT_EQ(pull.err, "");
    EXPECT_THAT(directory_.Read("out" + version + ".vcf"), HasSubstr("VERSION:" + version));
    const std::string second = MakeHandheld("second" + version, "ja-JP");
    EXPECT_EQ(Device({"import", second, file}).code, 0);
    EXPECT_EQ(WithoutOids(Contacts(second)), WithoutOids(AsCarried(contacts_))) << version;
  }
}

TEST_F(DesktopPull, WritesVCardsByDefaultAndToTheStandardOutput) {
  StartWithSamples();
  const Ended pull = Desktop({"pull", "contacts"});
  EXPECT_EQ(pull.code, 0);
  EXPECT_EQ(pull.err, "");
  EXPECT_THAT(pull.out, AllOf(StartsWith("BEGIN:VCARD\r\nVERSION:3.0\r\n"),
                              EndsWith("END:VCARD\r\n"), HasSubstr("N:Brandão;João;Pedro;;\r\n")));
  EXPECT_EQ(Desktop({"pull", "contacts"}).out, pull.out) << "with the same UIDs";
}

TEST_F(DesktopPull, WritesJsonAsTheHandheldsMaintenanceShowsIt) {
  StartWithSamples();
  const Ended pull = Desktop({"pull", "contacts", "--format", "json"});
  EXPECT_EQ(pull.code, 0);
  EXPECT_EQ(pull.out, AsCarried(contacts_));
}

TEST_F(DesktopPull, WritesXmlThatCanBePushedToAnotherHandheld) {
  StartWithSamples();
  const std::string file = Path("all.xml");
  const Ended pull = Desktop({"pull", "contacts", "--format", "xml", "-o", file});
  EXPECT_EQ(pull.code, 0);
  const std::string document = directory_.Read("all.xml");
  EXPECT_THAT(document,
              StartsWith("<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n<root>\n<CONTACT "));
  EXPECT_THAT(document, EndsWith("</root>\n"));
  StopAgent(SIGTERM);
  const std::string second = MakeHandheld("second", "ja-JP");
  StartAgent(second);
  EXPECT_EQ(Desktop({"push", file}).code, 0);
  StopAgent(SIGTERM);
  EXPECT_EQ(WithoutOids(Contacts(second)), WithoutOids(AsCarried(contacts_)));
}

TEST_F(DesktopPull, WritesTheSecondFormOfContacts) {
  StartWithSamples();
  const Ended pull = Desktop({"pull", "contacts2", "--format", "xml"});
  EXPECT_EQ(pull.code, 0);
  EXPECT_THAT(pull.out, HasSubstr("<Contact2 Oid=\"1\">"));
  EXPECT_THAT(pull.out, Not(HasSubstr("<CONTACT ")));
}

TEST_F(DesktopPull, WritesAnEmptyResultForAnEmptyHandheld) {
  StartAgent(MakeHandheld());
  EXPECT_EQ(Desktop({"pull", "contacts"}).out, "");
  const Ended json = Desktop({"pull", "contacts", "--format", "json"});
  EXPECT_EQ(json.code, 0);
  EXPECT_EQ(json.out, "");
}

TEST_F(DesktopPull, NamesAnIdentifierThatIsNotThere) {
  StartWithSamples();
  const Ended pull =
      Desktop({"pull", "contacts", "--oid", "4", "--oid", "987654", "--format", "json"});
  EXPECT_EQ(pull.code, 3);
  EXPECT_THAT(pull.out, StartsWith("{\"oid\":4,"));
  EXPECT_THAT(pull.out, HasSubstr("\"FirstName\":\"Mateo\""));
  EXPECT_TRUE(IsOneLine(pull.err)) << pull.err;
  EXPECT_THAT(pull.err, StartsWith("OID 987654: "));
}

TEST_F(DesktopPull, LeavesTheFileAsItWasWhenNobodyListens) {
  StartAgent(MakeHandheld());
  StopAgent(SIGTERM);
  const std::string file = File("out.vcf", "what was there before");
  const Ended pull = Desktop({"pull", "contacts", "-o", file});
  EXPECT_EQ(pull.code, 1);
  EXPECT_EQ(directory_.Read("out.vcf"), "what was there before");
}

class DesktopAgent : public ToolTest {};

TEST_F(DesktopAgent, SaysThatNobodyListens) {
  StartAgent(MakeHandheld());
  StopAgent(SIGTERM);
  const std::vector<Arguments> commands = {{"pull", "contacts"},
                                           {"push", Sample("people.vcf")},
                                           {"delete", "contacts", "--yes"},
                                           {"time", "get"},
                                           {"time", "set"},
                                           {"logging", "on"},
                                           {"quit"}};
  for (const Arguments& command : commands) {
    const Ended ended = Desktop(command);
    EXPECT_EQ(ended.code, 1) << command[0];
    EXPECT_THAT(ended.err, HasSubstr("corvane-desktop: nobody listens at 127.0.0.1:" +
                                     std::to_string(port()) + ": is corvane running there?\n"));
    if (command[0] != "push") {  // which says what has become of every contact
      EXPECT_TRUE(IsOneLine(ended.err)) << ended.err;
      EXPECT_EQ(ended.out, "");
    }
  }
}

TEST_F(DesktopAgent, GetsAndSetsTheTime) {
  StartAgent(MakeHandheld());
  EXPECT_THAT(Desktop({"time", "get"}).out,
              MatchesRegex("[0-9]{4}-[0-9]{2}-[0-9]{2}T[0-9:]{8}Z\n"));
  const Ended set = Desktop({"time", "set", "2008-02-15T14:45:00+01:00"});
  EXPECT_EQ(set.code, 0);
  EXPECT_EQ(set.err, "");
  EXPECT_THAT(set.out, StartsWith("2008-02-15T13:4"));
  EXPECT_THAT(Desktop({"time", "get"}).out, StartsWith("2008-02-15T13:4"));
  EXPECT_THAT(Desktop({"time", "get", "--json"}).out,
              MatchesRegex("\\{\"time\":\"2008-02-15T13:[0-9:]{5}Z\"\\}\n"));
  EXPECT_EQ(Desktop({"time", "set"}).code, 0);
  EXPECT_THAT(Desktop({"time", "get"}).out, Not(StartsWith("2008")));
}

TEST_F(DesktopAgent, SwitchesTheAgentsLogOnAndOff) {
  StartAgent(MakeHandheld());
  const std::string log = "handheld/files/CorvaneLog.txt";
  EXPECT_EQ(Desktop({"logging", "on"}).out, "logging is on\n");
  Desktop({"time", "get"});
  EXPECT_THAT(directory_.Read(log), HasSubstr("functionName = CVCeGetSystemTime"));
  EXPECT_EQ(Desktop({"logging", "off"}).out, "logging is off\n");
  const std::string closed = directory_.Read(log);
  EXPECT_THAT(closed, EndsWith(" : Log finished\r\n"));
  Desktop({"time", "get"});
  EXPECT_EQ(directory_.Read(log), closed);
  const Ended verbose = Desktop({"logging", "verbose"});
  EXPECT_EQ(verbose.code, 0);
  EXPECT_EQ(verbose.out, "logging is verbose\n");
}

TEST_F(DesktopAgent, WritesNothingOutsideTheStateDirectory) {
  StartAgent(MakeHandheld());
  EXPECT_EQ(Desktop({"push", Sample("people.vcf")}).code, 0);
  EXPECT_TRUE(
      std::filesystem::exists(Path("state/corvane/127.0.0.1_" + std::to_string(port()) + ".json")));
  EXPECT_FALSE(std::filesystem::exists(Path("home")));
}

}  // namespace
}  // namespace corvane::testing
