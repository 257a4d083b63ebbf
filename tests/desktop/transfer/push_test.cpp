#include "desktop/commands/commands_push.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <map>
#include <nlohmann/json.hpp>

#include "desktop/transfer/mapping.h"
#include "tests/desktop/push_fixture.h"
#include "tests/support/json_lines.h"

namespace desktop::testing {
namespace {

using ::testing::ElementsAre;
using ::testing::HasSubstr;

TEST_F(PushTest, AddsAndSaysUnderWhichOid) {
  Input(Card("u1", "Lee") + Card("u2", "Ray"));
  EXPECT_EQ(PushTo(store_), kDone);
  EXPECT_THAT(store_.requests, ElementsAre("UploadPIMRecords"));
  EXPECT_TRUE(store_.ended);
  EXPECT_EQ(out(), place(1) + "Lee: added with OID 101\n" + place(7) + "Ray: added with OID 102\n");
  EXPECT_EQ(err(), "2 added\n");
  EXPECT_THAT(store_.items[101], HasSubstr("<LAST_NAME>Lee</LAST_NAME>"));
  EXPECT_THAT(store_.items[101], HasSubstr("<FileAs>Lee</FileAs>"));
}

TEST_F(PushTest, ChangesWhatItAddedBefore) {
  Input(Card("u1", "Lee"));
  EXPECT_EQ(PushTo(store_), kDone);
  Input(Card("u1", "Leeds"));
  EXPECT_EQ(PushTo(store_), kDone);
  EXPECT_EQ(out(), place(1) + "Leeds: changed (OID 101)\n");
  EXPECT_EQ(store_.items.size(), 1U);
  EXPECT_THAT(store_.items[101], HasSubstr("<CONTACT Oid=\"101\">"));
}

TEST_F(PushTest, SendsNothingThatHasNotChanged) {
  Input(Card("u1", "Lee") + Card("", "Ray"));
  EXPECT_EQ(PushTo(store_), kDone);
  EXPECT_EQ(PushTo(store_), kDone);
  EXPECT_THAT(store_.requests, ElementsAre("UploadPIMRecords", "DownloadSpecificPIMRecords"));
  EXPECT_EQ(out(),
            place(1) + "Lee: unchanged (OID 101)\n" + place(7) + "Ray: unchanged (OID 102)\n");
  options_.policy.force = true;
  EXPECT_EQ(PushTo(store_), kDone);
  EXPECT_EQ(err(), "2 changed\n");
  EXPECT_EQ(store_.items.size(), 2U);
}

TEST_F(PushTest, AddsAnewWhatIsGoneAndRemembersItsNewOid) {
  Input(Card("u1", "Lee"));
  EXPECT_EQ(PushTo(store_), kDone);
  store_.items.clear();
  Input(Card("u1", "Leeds"));
  EXPECT_EQ(PushTo(store_), kDone);
  EXPECT_EQ(out(), place(1) + "Leeds: was gone, added anew with OID 102\n");
  const Mapping mapping(directory_ / "map.json");
  EXPECT_EQ(mapping.items().size(), 1U);
  EXPECT_EQ(mapping.FindUid("contact", "u1")->oid, 102U);
}

TEST_F(PushTest, SendsChunksOfTheSizeAskedFor) {
  std::string cards;
  for (int i = 0; i < 45; ++i) cards += Card("u" + std::to_string(i), "N" + std::to_string(i));
  Input(cards);
  EXPECT_EQ(PushTo(store_), kDone);
  EXPECT_THAT(store_.RecordsOfChunks(), ElementsAre(20, 20, 5));
  store_.chunks.clear();
  options_.policy = {.chunk = 40, .force = true};
  EXPECT_EQ(PushTo(store_), kDone);
  EXPECT_THAT(store_.RecordsOfChunks(), ElementsAre(40, 5));
}

TEST_F(PushTest, TellsFailedRecordsWithTheirReason) {
  Input(Card("u1", "Lee") + Card("u2", "Toolong"));
  store_.refused = "Toolong";
  EXPECT_EQ(PushTo(store_), kPartlyDone);
  EXPECT_EQ(out(), place(1) + "Lee: added with OID 101\n" + place(7) +
                       "Toolong: failed: 0x80040066 (text too long)\n");
  EXPECT_EQ(err(), "1 added, 1 failed\n");
  store_.refused = "e";
  options_.policy.force = true;
  EXPECT_EQ(PushTo(store_), kFailed);
  EXPECT_THAT(out(), HasSubstr("Lee: failed (OID 101): 0x80040066 (text too long)\n"));
}

TEST_F(PushTest, TellsACodeThatIsNoFailure) {
  Input(Card("u1", "Lee"));
  EXPECT_EQ(RunAgainst([](Peer& peer) {
              peer.ReceiveCounted();
              peer.Send(Word(0));
              peer.ReceiveCounted();
              peer.Send(Word(5) + Word(87));
              peer.AwaitEnd();
            }),
            kDone);
  EXPECT_EQ(out(), place(1) +
                       "Lee: added with OID 5: 87 (invalid value, such as a date that does not "
                       "exist)\n");
}

TEST_F(PushTest, TakesAPositiveCodeWithoutAnOidForFailed) {
  Input(Card("u1", "Lee"));
  const auto refuse = [](Peer& peer) {
    peer.ReceiveCounted();
    peer.Send(Word(0));
    peer.ReceiveCounted();
    peer.Send(Word(0) + Word(87));
    peer.AwaitEnd();
  };
  EXPECT_EQ(RunAgainst(refuse), kFailed);
  EXPECT_EQ(out(),
            place(1) + "Lee: failed: 87 (invalid value, such as a date that does not exist)\n");
  EXPECT_EQ(err(), "1 failed\n");
  EXPECT_TRUE(Mapping(directory_ / "map.json").items().empty());

  EXPECT_EQ(PushTo(store_), kDone);
  const std::string before = directory_.Read("map.json");
  Input(Card("u1", "Leeds"));
  {
    FakeAgent agent({store_.Serve(), refuse});
    EXPECT_EQ(Run(agent.options()), kFailed);
  }
  EXPECT_THAT(out(), HasSubstr("Leeds: failed (OID 101): 87 (invalid value"));
  EXPECT_EQ(directory_.Read("map.json"), before);
}

TEST_F(PushTest, TakesAnAddWithoutAnOidForFailed) {
  Input(Card("u1", "Lee"));
  EXPECT_EQ(RunAgainst([](Peer& peer) {
              peer.ReceiveCounted();
              peer.Send(Word(0));
              peer.ReceiveCounted();
              peer.Send(Word(0) + Word(0));
              peer.AwaitEnd();
            }),
            kFailed);
  EXPECT_EQ(out(), place(1) + "Lee: failed: no reason given\n");
  EXPECT_TRUE(Mapping(directory_ / "map.json").items().empty());
}

// Whatever was stored before the connection broke must not be added a second time.
TEST_F(PushTest, DuplicatesNothingThatWasStoredBeforeTheConnectionBroke) {
  std::string cards;
  for (int i = 0; i < 7; ++i) cards += Card("u" + std::to_string(i), "N" + std::to_string(i));
  Input(cards);
  options_.policy.chunk = 3;
  for (std::size_t answers = 0; answers < 7; ++answers) {
    Store store;
    std::filesystem::remove(directory_ / "map.json");
    EXPECT_EQ(RunAgainst(store.Serve(answers)), answers == 0 ? kFailed : kPartlyDone);
    EXPECT_THAT(err(), HasSubstr("ended the connection midway"));
    std::string summary;
    if (answers > 0) summary += std::to_string(answers) + " added, ";
    summary += std::to_string(7 - answers) + " unanswered";
    EXPECT_THAT(err(), HasSubstr(summary + "\n"));

    const std::map<Oid, std::string> before = store.items;
    EXPECT_EQ(PushTo(store), kDone);
    for (const auto& [oid, item] : before) EXPECT_EQ(store.items[oid], item);
    EXPECT_EQ(store.items.size(), 7U) << answers;
  }
}

TEST_F(PushTest, SendsTheSecondOfTwoWithOneUidAsAChange) {
  Input(Card("u1", "Lee") + Card("u1", "Leeds"));
  EXPECT_EQ(PushTo(store_), kDone);
  EXPECT_EQ(out(),
            place(1) + "Lee: added with OID 101\n" + place(7) + "Leeds: changed (OID 101)\n");
}

TEST_F(PushTest, AddsTwoEqualCardsWithoutAUidOnce) {
  Input(Card("", "Lee") + Card("", "Lee"));
  EXPECT_EQ(PushTo(store_), kDone);
  EXPECT_EQ(store_.items.size(), 1U);
  EXPECT_EQ(err(), "1 added, 1 unchanged\n");
}

TEST_F(PushTest, ShowsInADryRunWhatItWouldSend) {
  Input(Card("u1", "Lee"));
  EXPECT_EQ(PushTo(store_), kDone);
  const std::string mapping = directory_.Read("map.json");
  Input(Card("u1", "Leeds") + Card("u2", "Ray"));
  options_.policy.dryRun = true;
  EXPECT_EQ(PushTo(store_), kDone);
  EXPECT_THAT(store_.requests, ElementsAre("UploadPIMRecords", "DownloadSpecificPIMRecords"));
  EXPECT_THAT(out(), HasSubstr("Leeds: would be changed (OID 101)\n  <CONTACT Oid=\"101\">"));
  EXPECT_THAT(out(), HasSubstr("Ray: would be added\n  <CONTACT><LAST_NAME>Ray</LAST_NAME>"));
  EXPECT_EQ(directory_.Read("map.json"), mapping);
}

TEST_F(PushTest, GivesItsResultsAsJson) {
  Input(Card("u1", "Lee") + Card("u2", "Toolong"));
  store_.refused = "Toolong";
  console_.console.json = true;
  EXPECT_EQ(PushTo(store_), kPartlyDone);
  const auto results = corvane::testing::JsonLines(out());
  ASSERT_EQ(results.size(), 2U);
  EXPECT_EQ(results[0]["outcome"], "added");
  EXPECT_EQ(results[0]["oid"], 101);
  EXPECT_EQ(results[1]["outcome"], "failed");
  EXPECT_EQ(results[1]["code"], static_cast<std::int32_t>(0x80040066));
  EXPECT_EQ(results[1]["meaning"], "text too long");
}

TEST_F(PushTest, PrintsTheNoticesOfTheVCardReader) {
  Input("BEGIN:VCARD\nVERSION:3.0\nN:Lee;;;;\nPHOTO:http://example.org/x\nUID:u\nEND:VCARD\n");
  EXPECT_EQ(PushTo(store_), kDone);
  EXPECT_THAT(err(), HasSubstr(place(4)));
}

TEST_F(PushTest, ReadsAllFilesBeforeItSendsAnything) {
  Input(Card("u1", "Lee"));
  options_.files.push_back(directory_ / "missing.vcf");
  EXPECT_EQ(Run(NobodyThere()), kFailed);
  EXPECT_THAT(err(), HasSubstr("missing.vcf: No such file or directory"));
}

TEST_F(PushTest, RefusesAFileThatIsNoVCardButTakesAnEmptyOne) {
  Input("%PDF-1.4 something");
  EXPECT_EQ(Run(NobodyThere()), kFailed);
  EXPECT_THAT(err(), HasSubstr("no vCard in it"));
  Input("\r\n");
  EXPECT_EQ(Run(NobodyThere()), kDone);
  EXPECT_EQ(err(), "nothing to send\n");
}

TEST_F(PushTest, SendsNothingWithADamagedMapping) {
  Input(Card("u1", "Lee"));
  directory_.Write("map.json", "garbage");
  EXPECT_EQ(Run(NobodyThere()), kFailed);
  EXPECT_THAT(err(), HasSubstr("cannot be understood"));
  EXPECT_EQ(directory_.Read("map.json"), "garbage");
}

TEST_F(PushTest, SaysWhenNobodyListens) {
  Input(Card("u1", "Lee"));
  EXPECT_EQ(Run(NobodyThere()), kFailed);
  EXPECT_THAT(err(), HasSubstr("is corvane running there?"));
  EXPECT_EQ(out(), place(1) + "Lee: not sent\n");
}

TEST_F(PushTest, GivesUpOnASilentAgent) {
  Input(Card("u1", "Lee"));
  FakeAgent agent({[](Peer& peer) { peer.AwaitEnd(); }});
  ConnectionOptions connection = agent.options();
  connection.timeout = std::chrono::milliseconds(50);
  EXPECT_EQ(Run(connection), kFailed);
  EXPECT_THAT(err(), HasSubstr("has been silent for 0.05 s"));
}

// Mappings on people's disks have them.
TEST_F(PushTest, HashesStayTheSameOverVersions) {
  directory_.Write("in.ics",
                   "BEGIN:VCALENDAR\nVERSION:2.0\nBEGIN:VEVENT\nUID:choir\nSUMMARY:Choir\n"
                   "DTSTART:20240506T090000Z\nDTEND:20240506T100000Z\n"
                   "RRULE:FREQ=WEEKLY;UNTIL=20240526T000000Z\nEXDATE:20240513T090000Z\n"
                   "END:VEVENT\nBEGIN:VTODO\nSUMMARY:Nameless\nDESCRIPTION:one\\ntwo\n"
                   "PRIORITY:1\nEND:VTODO\nEND:VCALENDAR\n");
  Input(
      "BEGIN:VCARD\nVERSION:3.0\nN:Lee;Ann;;;\nFN:Ann Lee\nUID:ann\nNOTE:a\\nb \"q\" \\\\ back\n"
      "BDAY:1970-02-28\nCATEGORIES:x,y\nEND:VCARD\n");
  const NoticeSink notices = [](const auto&...) {};
  std::vector<PushRecord> records = ReadPushFile(directory_ / "in.ics", ZoneNamed("UTC"), notices);
  for (PushRecord& record : ReadPushFile(options_.files[0], ZoneNamed("UTC"), notices)) {
    records.push_back(std::move(record));
  }
  const char* const hashes[] = {"a1a2e8db83db0e1326423764f188fecd",
                                "0b6a62acf50655a98695a12032c96abc",
                                "ed05050e0cc15ebf158338091b2ae8d7"};
  ASSERT_EQ(records.size(), std::size(hashes));
  for (std::size_t i = 0; i < records.size(); ++i) {
    EXPECT_EQ(records[i].hash, hashes[i]) << records[i].title;
    EXPECT_EQ(StateOf(records[i]), hashes[i]) << records[i].title;
    EXPECT_EQ(records[i].content, records[i].uid.empty() ? hashes[i] : "") << records[i].title;
  }
}

class PushXmlTest : public PushTest {
 protected:
  PushXmlTest() { options_.files = {directory_ / "in.xml"}; }
};

TEST_F(PushXmlTest, SendsTheRecordsThatTheAgentTakesAndNamesTheOthers) {
  Input(
      "<root>\n<CALENDAR><SUBJECT>Meeting</SUBJECT></CALENDAR>\n<Note/>\n"
      "<Contact2><COMPANY>C</COMPANY></Contact2>\n<TASK/>\n</root>");
  EXPECT_EQ(PushTo(store_), kDone);
  EXPECT_EQ(out(), place(2) + "Meeting: added with OID 101\n" + place(4) +
                       "C: added with OID 102\n" + place(5) + "(no subject): added with OID 103\n");
  EXPECT_EQ(err(), place(3) + "Note: the handheld takes in no such record\n3 added\n");
  EXPECT_EQ(store_.items[101], "<CALENDAR><SUBJECT>Meeting</SUBJECT></CALENDAR>");
}

TEST_F(PushXmlTest, ChangesAndDeletesTheItemsThatTheFileNames) {
  Input("<root><CONTACT><COMPANY>C</COMPANY></CONTACT></root>");
  EXPECT_EQ(PushTo(store_), kDone);
  Input(
      "<root><CONTACT Oid='101'><COMPANY>D</COMPANY></CONTACT><CONTACT Oid='101' Delete='1'/>"
      "<CONTACT Delete='1'/></root>");
  EXPECT_EQ(PushTo(store_), kDone);
  EXPECT_THAT(out(), HasSubstr("D: changed (OID 101)\n"));
  EXPECT_THAT(out(), HasSubstr(": is not there any more (OID 101)\n"));
  EXPECT_THAT(out(), HasSubstr(": names no item to delete\n"));
  EXPECT_TRUE(store_.items.empty());
  EXPECT_TRUE(Mapping(directory_ / "map.json").items().empty());
}

TEST_F(PushXmlTest, AddsARecordWithoutAnOidOnce) {
  Input("<root><TASK><SUBJECT>s</SUBJECT></TASK></root>");
  EXPECT_EQ(PushTo(store_), kDone);
  EXPECT_EQ(PushTo(store_), kDone);
  EXPECT_EQ(out(), place(1) + "s: unchanged (OID 101)\n");
}

TEST_F(PushXmlTest, NamesTheLineOfMalformedXml) {
  Input("<root>\n<CONTACT>\n</root>");
  EXPECT_EQ(Run(NobodyThere()), kFailed);
  EXPECT_THAT(err(), HasSubstr(options_.files[0].string() + ": line 3: "));
}

TEST_F(PushXmlTest, RefusesAnOidThatIsNone) {
  Input("<root>\n<CONTACT Oid='0x1G'/></root>");
  EXPECT_EQ(Run(NobodyThere()), kFailed);
  EXPECT_EQ(err(), "corvane-desktop: " + place(2) + "\"0x1G\" is no object identifier\n");
}

TEST_F(PushXmlTest, TellsTheKindOfAFileWithAnotherNameByItsContent) {
  options_.files = {directory_ / "records"};
  Input("\xEF\xBB\xBF\n<root><TASK/></root>");
  EXPECT_EQ(PushTo(store_), kDone);
  Input(Card("u", "Lee"));
  EXPECT_EQ(PushTo(store_), kDone);
}

}  // namespace
}  // namespace desktop::testing
