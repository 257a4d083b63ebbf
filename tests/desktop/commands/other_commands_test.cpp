#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "desktop/commands/commands_agent.h"
#include "desktop/commands/commands_delete.h"
#include "desktop/commands/commands_device.h"
#include "desktop/commands/commands_time.h"
#include "desktop/transfer/mapping.h"
#include "desktop/wire/request.h"
#include "desktop/wire/xml_records.h"
#include "tests/desktop/fixtures.h"

namespace desktop::testing {
namespace {

using ::testing::HasSubstr;

class DeleteTest : public CommandTest {
 protected:
  DeleteTest() {
    options_.mapping = directory_ / "map.json";
    Mapping mapping(*options_.mapping);
    mapping.Put({5, "contact", "u5", "", "h"});
    mapping.Put({6, "contact", "u6", "", "h"});
    mapping.Put({7, "TASK", "", "c7", "h"});
    mapping.Save();
  }

  std::size_t Mapped() const { return Mapping(*options_.mapping).items().size(); }

  DeleteOptions options_;
};

TEST_F(DeleteTest, OfAllNeedsYesWithoutATerminal) {
  EXPECT_EQ(Delete(NobodyThere(), options_, console_.console), kUsage);
  EXPECT_EQ(err(), "corvane-desktop: deleting all contacts needs --yes\n");
}

TEST_F(DeleteTest, OfAllAsksTheAgentForKindOneAndForgetsTheContacts) {
  FakeAgent agent({Answer(ReplyRecord(0))});
  options_.yes = true;
  EXPECT_EQ(Delete(agent.options(), options_, console_.console), kDone);
  agent.Join();
  ASSERT_EQ(seen_.size(), 1U);
  EXPECT_EQ(seen_[0].function, "DeleteAllPIMRecords");
  EXPECT_EQ(seen_[0].input, Word(1));
  EXPECT_EQ(seen_[0].streamed, 0U);
  EXPECT_EQ(Mapped(), 1U);
}

TEST_F(DeleteTest, OfAllAsksOnATerminalAndTakesOnlyYesForYes) {
  console_.console.inIsTerminal = true;
  for (const char* answer : {"", "\n", "n\n", "nope\n"}) {
    console_.in.clear();
    console_.in.str(answer);
    EXPECT_EQ(Delete(NobodyThere(), options_, console_.console), kFailed) << answer;
    EXPECT_THAT(err(), HasSubstr("Delete all contacts on the handheld at "));
    EXPECT_THAT(err(), HasSubstr("nothing deleted\n"));
  }
  EXPECT_EQ(Mapped(), 3U);
  FakeAgent agent({Answer(ReplyRecord(0))});
  console_.in.clear();
  console_.in.str("y\n");
  EXPECT_EQ(Delete(agent.options(), options_, console_.console), kDone);
  EXPECT_EQ(Mapped(), 1U);
}

TEST_F(DeleteTest, OfAllSaysWhyItFailedAndKeepsTheMapping) {
  FakeAgent agent({Answer(ReplyRecord(0x80004005))});
  options_.yes = true;
  EXPECT_EQ(Delete(agent.options(), options_, console_.console), kFailed);
  EXPECT_EQ(err(), "corvane-desktop: not all contacts could be deleted: 0x80004005 (failed)\n");
  EXPECT_EQ(Mapped(), 3U);
}

TEST_F(DeleteTest, OfSomeSendsDeletionsAndForgetsThem) {
  std::string chunk;
  const auto look = Answer(
      Word(0) + Counted(Document("<CONTACT Oid=\"5\"/><CONTACT Oid=\"-1\"/>")) + Word(0) + Word(0));
  FakeAgent agent({look, [&](Peer& peer) {
                     peer.ReceiveCounted();
                     peer.Send(Word(0));
                     chunk = peer.ReceiveCounted();
                     peer.Send(Word(5) + Word(0) + Word(0xFFFFFFFF) + Word(0x80070005));
                     peer.AwaitEnd();
                   }});
  options_.oids = {5, 0xFFFFFFFF};
  EXPECT_EQ(Delete(agent.options(), options_, console_.console), kPartlyDone);
  agent.Join();
  EXPECT_EQ(chunk,
            "<?xml version=\"1.0\" encoding=\"UTF-8\"?><root><CONTACT Oid=\"5\" Delete=\"1\"/>"
            "<CONTACT Oid=\"-1\" Delete=\"1\"/></root>");
  EXPECT_EQ(console_.out.str(),
            "contact: is not there any more (OID 5)\n"
            "contact: failed (OID 4294967295): 0x80070005 (access denied)\n");
  EXPECT_EQ(Mapped(), 2U);
}

TEST_F(DeleteTest, OfAnotherKindNamesItAndForgetsThatKindAlone) {
  {
    Mapping mapping(*options_.mapping);
    mapping.Put({8, "appointment", "u8", "", "h"});
    mapping.Put({9, "task", "u9", "", "h"});
    mapping.Save();
  }
  options_.kind = RecordKind::kAppointments;
  EXPECT_EQ(Delete(NobodyThere(), options_, console_.console), kUsage);
  EXPECT_EQ(err(), "corvane-desktop: deleting all appointments needs --yes\n");
  options_.yes = true;
  FakeAgent agent({Answer(ReplyRecord(0)), Answer(ReplyRecord(0))});
  EXPECT_EQ(Delete(agent.options(), options_, console_.console), kDone);
  EXPECT_EQ(Mapping(*options_.mapping).FindOid(8), nullptr);
  EXPECT_EQ(Mapped(), 4U);
  options_.kind = RecordKind::kTasks;
  EXPECT_EQ(Delete(agent.options(), options_, console_.console), kDone);
  agent.Join();
  EXPECT_EQ(Mapping(*options_.mapping).FindOid(9), nullptr);
  EXPECT_EQ(console_.out.str(), "all appointments deleted\nall tasks deleted\n");
  ASSERT_EQ(seen_.size(), 2U);
  EXPECT_EQ(seen_[0].input, Word(0));
  EXPECT_EQ(seen_[1].input, Word(2));
}

TEST_F(DeleteTest, OfWhatIsNotThereSaysSo) {
  const auto gone = [](const std::string& oid, const std::string& status) {
    return "<Error Oid=\"" + oid + "\"><Value>" + status + "</Value></Error>";
  };
  FakeAgent agent(
      {Answer(Word(0) + Counted(Document(gone("5", "-2147024809") + gone("6", "-2147024894"))) +
              Word(0) + Word(0))});
  options_.oids = {5, 6};
  EXPECT_EQ(Delete(agent.options(), options_, console_.console), kPartlyDone);
  EXPECT_EQ(console_.out.str(), "contact: not found (OID 5)\ncontact: not found (OID 6)\n");
  EXPECT_EQ(err(), "2 not found\n");
  EXPECT_EQ(Mapping(*options_.mapping).FindOid(5), nullptr);
}

TEST_F(DeleteTest, OfOneNamedTwiceFindsItOnce) {
  FakeAgent agent({Answer(Word(0) + Counted(Document("<CONTACT Oid=\"5\"/>")) + Word(0) + Word(0)),
                   [](Peer& peer) {
                     peer.ReceiveCounted();
                     peer.Send(Word(0));
                     peer.ReceiveCounted();
                     peer.Send(Word(5) + Word(0));
                     peer.AwaitEnd();
                   }});
  options_.oids = {5, 5};
  EXPECT_EQ(Delete(agent.options(), options_, console_.console), kPartlyDone);
  EXPECT_EQ(err(), "1 deleted, 1 not found\n");
}

TEST_F(DeleteTest, OfSomeSendsElementsOfTheKind) {
  std::string chunk;
  const auto look = Answer(Word(0) + Counted(Document("<TASK Oid=\"5\"/>")) + Word(0) + Word(0));
  FakeAgent agent({look, [&](Peer& peer) {
                     peer.ReceiveCounted();
                     peer.Send(Word(0));
                     chunk = peer.ReceiveCounted();
                     peer.Send(Word(5) + Word(0));
                     peer.AwaitEnd();
                   }});
  options_.kind = RecordKind::kTasks;
  options_.oids = {5};
  EXPECT_EQ(Delete(agent.options(), options_, console_.console), kDone);
  agent.Join();
  EXPECT_THAT(chunk, HasSubstr("<root><TASK Oid=\"5\" Delete=\"1\"/></root>"));
  EXPECT_EQ(console_.out.str(), "task: is not there any more (OID 5)\n");
}

class KeysTest : public CommandTest {
 protected:
  int Run(const std::string& reply, bool json = false) {
    FakeAgent agent({Answer(reply)});
    const int code = PrintKeys(agent.options(), RecordKind::kTasks, json, console_.console);
    agent.Join();
    return code;
  }
};

TEST_F(KeysTest, AreOneALineInTheHandheldsOrder) {
  EXPECT_EQ(Run(ReplyRecord(0, Document("<SUBJECT/><CATEGORIES/><NOTES/>"))), kDone);
  EXPECT_EQ(out(), "SUBJECT\nCATEGORIES\nNOTES\n");
  ASSERT_EQ(seen_.size(), 1U);
  EXPECT_EQ(seen_[0].function, "GetDatabaseKeys");
  EXPECT_EQ(seen_[0].input, Word(2));
  EXPECT_EQ(seen_[0].streamed, 0U);
}

TEST_F(KeysTest, AreALineEachAsJson) {
  EXPECT_EQ(Run(ReplyRecord(0, Document("<SUBJECT/><NOTES/>")), true), kDone);
  EXPECT_EQ(out(), "\"SUBJECT\"\n\"NOTES\"\n");
}

TEST_F(KeysTest, AreNotToldByAnAgentThatFails) {
  EXPECT_EQ(Run(ReplyRecord(0x80070057)), kFailed);
  EXPECT_EQ(err(),
            "corvane-desktop: the handheld does not tell its keys: 0x80070057 (invalid argument, "
            "or no such item)\n");
  EXPECT_EQ(out(), "");
}

TEST_F(KeysTest, AreNotToldByAnAgentThatDoesNotKnowTheRequest) {
  EXPECT_EQ(Run(ReplyRecord(0)), kFailed);
  EXPECT_EQ(err(), "corvane-desktop: the agent does not know the request GetDatabaseKeys\n");
}

TEST_F(KeysTest, AreNoneInAnAnswerThatIsNoDocument) {
  EXPECT_EQ(Run(ReplyRecord(0, "<root>")), kFailed);
  EXPECT_THAT(err(), HasSubstr("the answer to GetDatabaseKeys makes no sense: line 1: "));
}

UtcTime Time(const char* text) {
  return *ParseTime(text);
}

std::string TimeReply(const char* text) {
  return ReplyRecord(0, *SystemTimeBytes(Time(text)));
}

using TimeTest = CommandTest;

TEST_F(TimeTest, IsPrintedInUtc) {
  FakeAgent agent(
      {Answer(TimeReply("2008-02-15T09:05:07Z")), Answer(TimeReply("2008-02-15T09:05:07Z"))});
  EXPECT_EQ(GetTime(agent.options(), false, console_.console), kDone);
  EXPECT_EQ(GetTime(agent.options(), true, console_.console), kDone);
  agent.Join();
  EXPECT_EQ(console_.out.str(), "2008-02-15T09:05:07Z\n{\"time\":\"2008-02-15T09:05:07Z\"}\n");
  EXPECT_EQ(seen_.at(0).function, "CVCeGetSystemTime");
}

TEST_F(TimeTest, IsRefusedWhenItIsNone) {
  FakeAgent agent({Answer(ReplyRecord(0, "abc")), Answer(ReplyRecord(0x80070057))});
  EXPECT_EQ(GetTime(agent.options(), false, console_.console), kFailed);
  EXPECT_THAT(console_.err.str(), HasSubstr("makes no sense: 3 bytes that are no time"));
  EXPECT_EQ(GetTime(agent.options(), false, console_.console), kFailed);
  EXPECT_THAT(console_.err.str(), HasSubstr("does not tell its time: 0x80070057"));
}

TEST_F(TimeTest, IsSetAndReadBack) {
  FakeAgent agent({Answer(ReplyRecord(0)), Answer(TimeReply("2008-02-15T09:05:08Z"))});
  EXPECT_EQ(SetTime(agent.options(), Time("2008-02-15T09:05:07Z"), console_.console), kDone);
  agent.Join();
  EXPECT_EQ(seen_.at(0).function, "CVCeSetSystemTime");
  EXPECT_EQ(seen_.at(0).input, *SystemTimeBytes(Time("2008-02-15T09:05:07Z")));
  EXPECT_EQ(console_.out.str(), "2008-02-15T09:05:08Z\n");
}

TEST_F(TimeTest, IsSetAgainWhenTheAgentMovedItByADaylightSavingChange) {
  FakeAgent agent({Answer(ReplyRecord(0)), Answer(TimeReply("2008-07-15T10:05:07Z")),
                   Answer(ReplyRecord(0)), Answer(TimeReply("2008-07-15T09:05:07Z"))});
  EXPECT_EQ(SetTime(agent.options(), Time("2008-07-15T09:05:07Z"), console_.console), kDone);
  agent.Join();
  EXPECT_EQ(seen_.at(2).input, seen_.at(0).input);
  EXPECT_EQ(console_.out.str(), "2008-07-15T09:05:07Z\n");
}

TEST_F(TimeTest, IsToldWhenTheHandheldTookAnotherOne) {
  FakeAgent agent({Answer(ReplyRecord(0)), Answer(TimeReply("2000-01-01T00:00:00Z")),
                   Answer(ReplyRecord(0)), Answer(TimeReply("2000-01-01T00:00:00Z"))});
  EXPECT_EQ(SetTime(agent.options(), Time("2008-07-15T09:05:07Z"), console_.console), kFailed);
  EXPECT_EQ(console_.err.str(),
            "corvane-desktop: the handheld was told 2008-07-15T09:05:07Z and took another time\n");
}

TEST_F(TimeTest, TakesAPositiveStatusForAFailure) {
  FakeAgent agent({Answer(ReplyRecord(87))});
  EXPECT_EQ(SetTime(agent.options(), Time("2008-02-15T09:05:07Z"), console_.console), kFailed);
  EXPECT_THAT(console_.err.str(), HasSubstr("did not set its clock: 87 ("));
}

TEST_F(TimeTest, OfAYearThatAClockDoesNotHaveIsNotSent) {
  EXPECT_EQ(SetTime(NobodyThere(), Time("1600-01-01T00:00Z"), console_.console), kFailed);
  EXPECT_THAT(console_.err.str(), HasSubstr("is no year for a clock"));
}

using SetLoggingTest = CommandTest;

TEST_F(SetLoggingTest, SendsItsLevel) {
  const std::pair<LoggingLevel, std::uint32_t> cases[] = {
      {LoggingLevel::kOff, 0}, {LoggingLevel::kOn, 1}, {LoggingLevel::kVerbose, 42}};
  for (const auto& [level, value] : cases) {
    FakeAgent agent({Answer(ReplyRecord(0))});
    EXPECT_EQ(SetLogging(agent.options(), level, console_.console), kDone);
    agent.Join();
    EXPECT_EQ(seen_.back().function, "CVResetLoggingState");
    EXPECT_EQ(seen_.back().input, Word(value));
  }
}

TEST_F(SetLoggingTest, SaysWhenTheSettingWasNotKept) {
  FakeAgent agent({Answer(ReplyRecord(5))});
  EXPECT_EQ(SetLogging(agent.options(), LoggingLevel::kOn, console_.console), kFailed);
  EXPECT_EQ(err(), "corvane-desktop: the handheld did not keep the setting: 5 (access denied)\n");
}

TEST(Quit, SendsItsRecordAndWakesTheAgentOnceItHasReadIt) {
  TestConsole console;
  std::string record;
  std::string wake = "not there yet";
  FakeAgent agent({[&](Peer& peer) {
                     record = peer.ReceiveOnce();
                     peer.AwaitEnd();
                   },
                   [&](Peer& peer) { wake = peer.ReceiveOnce(); }});
  EXPECT_EQ(Quit(agent.options(), console.console), kDone);
  agent.Join();
  EXPECT_EQ(record, QuitRecord());
  EXPECT_EQ(wake, "");
}

TEST(Quit, IsContentWithAnAgentThatHasEndedBeforeItIsWoken) {
  TestConsole console;
  FakeAgent agent({[](Peer& peer) { peer.AwaitEnd(); }});
  EXPECT_EQ(Quit(agent.options(), console.console), kDone);
  EXPECT_THAT(console.out.str(), HasSubstr("has been asked to end"));
}

TEST(Quit, SaysWhenNobodyListens) {
  TestConsole console;
  EXPECT_EQ(Quit(NobodyThere(), console.console), kFailed);
  EXPECT_THAT(console.err.str(), HasSubstr("is corvane running there?"));
}

}  // namespace
}  // namespace desktop::testing
