// What a handheld has already, though no mapping knows it; and what a dry run says of a push.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <filesystem>
#include <map>
#include <nlohmann/json.hpp>
#include <string>
#include <vector>

#include "tests/desktop/push_fixture.h"
#include "tests/support/json_lines.h"

namespace desktop::testing {
namespace {

using ::testing::ElementsAre;
using ::testing::HasSubstr;

std::string Person(const std::string& uid, const std::string& name, const std::string& more) {
  return "BEGIN:VCARD\r\nVERSION:3.0\r\nN:" + name + ";Eva;;;\r\nFN:Eva " + name + "\r\n" + more +
         (uid.empty() ? "" : "UID:" + uid + "\r\n") + "END:VCARD\r\n";
}

constexpr const char* kMobile = "TEL;TYPE=CELL:+49 170 1234567\r\n";
constexpr const char* kSameMobile = "TEL;TYPE=CELL:0170 1234567\r\n";

class PushRecognition : public PushTest {
 protected:
  PushRecognition() {
    options_.policy.recognise = true;
    options_.country = "DE";
  }
  void ForgetAll() { std::filesystem::remove(directory_ / "map.json"); }
  // As many connections as it makes.
  int PushAll() {
    const FakeAgent::Script serve = store_.Serve();
    FakeAgent agent(std::vector<FakeAgent::Script>(12, serve));
    return Run(agent.options());
  }
};

TEST_F(PushRecognition, AddsNothingThatIsThereAlready) {
  Input(Person("u1", "Berg", kMobile) + Card("", "Lee"));
  EXPECT_EQ(PushAll(), kDone);
  EXPECT_EQ(err(), "2 added\n");
  ForgetAll();
  EXPECT_EQ(PushAll(), kDone);
  EXPECT_EQ(err(), "2 unchanged\n");
  EXPECT_EQ(store_.items.size(), 2U);
}

TEST_F(PushRecognition, LooksForNothingThatTheMappingKnows) {
  Input(Card("u1", "Lee"));
  EXPECT_EQ(PushAll(), kDone);
  ForgetAll();
  EXPECT_EQ(PushAll(), kDone);
  store_.requests.clear();
  EXPECT_EQ(PushAll(), kDone);
  EXPECT_THAT(store_.requests, ElementsAre("DownloadSpecificPIMRecords"));
}

TEST_F(PushRecognition, ChangesFromThenOnWhatItRecognised) {
  Input(Card("u1", "Lee"));
  EXPECT_EQ(PushAll(), kDone);
  ForgetAll();
  EXPECT_EQ(PushAll(), kDone);
  Input(Card("u1", "Leeds"));
  EXPECT_EQ(PushAll(), kDone);
  EXPECT_EQ(out(), place(1) + "Leeds: changed (OID 101)\n");
  EXPECT_EQ(store_.items.size(), 1U);
}

TEST_F(PushRecognition, OverwritesNobodyWhoIsThereWithOtherContent) {
  Input(Person("u1", "Berg", kMobile));
  EXPECT_EQ(PushAll(), kDone);
  ForgetAll();
  const auto items = store_.items;
  Input(Person("u2", "Berg", std::string(kSameMobile) + "TITLE:Engineer\r\n"));
  EXPECT_EQ(PushAll(), kFailed);
  EXPECT_THAT(out(), HasSubstr("conflict"));
  EXPECT_EQ(store_.items, items);
  options_.policy.force = true;
  EXPECT_EQ(PushAll(), kDone);
  EXPECT_EQ(err(), "1 changed\n");
  EXPECT_EQ(store_.items.size(), 1U);
}

TEST_F(PushRecognition, TakesNumbersForThoseOfTheCountry) {
  Input(Person("u1", "Berg", kMobile));
  EXPECT_EQ(PushAll(), kDone);
  ForgetAll();
  options_.country = "AT";
  Input(Person("u2", "Berg", kSameMobile));
  EXPECT_EQ(PushAll(), kDone);
  EXPECT_EQ(err(), "1 added\n");
}

TEST_F(PushRecognition, AddsWhomItHasNotMet) {
  Input(Person("u1", "Berg", kMobile));
  EXPECT_EQ(PushAll(), kDone);
  ForgetAll();
  Input(Person("u1", "Berg", kMobile) + Person("u2", "Hill", kMobile));
  EXPECT_EQ(PushAll(), kDone);
  EXPECT_EQ(err(), "1 added, 1 unchanged\n");
}

TEST_F(PushRecognition, TakesEachItemForOneRecord) {
  Input(Card("u1", "Lee") + Card("u2", "Lee"));
  EXPECT_EQ(PushAll(), kDone);
  ForgetAll();
  Input(Card("u1", "Lee") + Card("u2", "Lee") + Card("u3", "Lee"));
  EXPECT_EQ(PushAll(), kDone);
  EXPECT_EQ(err(), "1 added, 2 unchanged\n");
  EXPECT_EQ(store_.items.size(), 3U);
}

TEST_F(PushRecognition, KnowsEventsAndTasksToo) {
  options_.files = {directory_ / "in.ics"};
  Input(
      "BEGIN:VCALENDAR\nVERSION:2.0\nBEGIN:VEVENT\nUID:e\nSUMMARY:Choir\n"
      "DTSTART:20240506T090000Z\nDTEND:20240506T100000Z\nRRULE:FREQ=WEEKLY;COUNT=5\n"
      "EXDATE:20240513T090000Z\nEND:VEVENT\nBEGIN:VTODO\nUID:t\nSUMMARY:Tax\n"
      "DUE;VALUE=DATE:20240530\nEND:VTODO\nEND:VCALENDAR\n");
  EXPECT_EQ(PushAll(), kDone);
  ForgetAll();
  EXPECT_EQ(PushAll(), kDone);
  EXPECT_EQ(err(), "2 unchanged\n");
}

TEST_F(PushRecognition, SendsNothingWhenItCannotLook) {
  Input(Card("u1", "Lee"));
  EXPECT_EQ(RunAgainst([](Peer& peer) {
              peer.ReceiveCounted();
              peer.Send(Word(0) + Counted(Document("")) + Word(0) + Word(0x80004005));
            }),
            kFailed);
  EXPECT_EQ(out(), place(1) + "Lee: not sent\n");
  EXPECT_EQ(store_.items.size(), 0U);
}

// What becomes of each record, as programs are told.
std::vector<std::string> Outcomes(const std::string& json) {
  std::vector<std::string> outcomes;
  for (const auto& each : corvane::testing::JsonLines(json)) outcomes.push_back(each["outcome"]);
  return outcomes;
}

TEST_F(PushRecognition, ADryRunSaysWhatARunDoes) {
  Input(Card("gone", "Gone") + Card("edited", "Edited") + Card("both", "Both") +
        Card("same", "Same") + Card("theirs", "Theirs"));
  EXPECT_EQ(PushAll(), kDone);
  store_.items.erase(101);
  const auto change = [&](Oid oid, const std::string& from, const std::string& to) {
    std::string& bytes = store_.items[oid];
    for (std::size_t at = bytes.find(from); at != std::string::npos; at = bytes.find(from, at)) {
      bytes.replace(at, from.size(), to);
      at += to.size();
    }
  };
  change(103, "Both", "Handheld");
  change(105, "Theirs", "Changed");
  store_.items[110] = "<CONTACT><LAST_NAME>There</LAST_NAME><FileAs>There</FileAs></CONTACT>";
  directory_.Write("changes.xml",
                   "<root><CONTACT Oid=\"104\" Delete=\"1\"/><CONTACT Oid=\"104\" Delete=\"1\"/>"
                   "<CONTACT Oid=\"77\" Delete=\"1\"/><CONTACT Oid=\"78\"><LAST_NAME>Own"
                   "</LAST_NAME></CONTACT><CONTACT Delete=\"1\"/></root>");
  Input(Card("gone", "Gone") + Card("edited", "Edited2") + Card("both", "Desk") +
        Card("same", "Same") + Card("theirs", "Theirs") + Card("new", "New") + Card("new", "New") +
        Card("new", "Newer") + Card("there", "There"));
  options_.files.push_back(directory_ / "changes.xml");
  console_.console.json = true;
  options_.policy.dryRun = true;
  const auto items = store_.items;
  const std::string mapping = directory_.Read("map.json");
  const int dryCode = PushAll();
  const std::vector<std::string> dry = Outcomes(out());
  EXPECT_EQ(store_.items, items);
  EXPECT_EQ(directory_.Read("map.json"), mapping);

  options_.policy.dryRun = false;
  EXPECT_EQ(PushAll(), dryCode);
  const std::map<std::string, std::string> words = {{"would add", "added"},
                                                    {"would add anew", "added anew"},
                                                    {"would change", "changed"},
                                                    {"would delete", "deleted"}};
  std::vector<std::string> expected;
  for (const std::string& outcome : dry) {
    const auto found = words.find(outcome);
    expected.push_back(found == words.end() ? outcome : found->second);
  }
  EXPECT_EQ(Outcomes(out()), expected);
  EXPECT_THAT(expected, ElementsAre("added anew", "changed", "conflict", "unchanged", "conflict",
                                    "added", "unchanged", "changed", "unchanged", "deleted",
                                    "not found", "not found", "added anew", "nothing to delete"));
}

TEST_F(PushRecognition, ADryRunKnowsWhatAPushBeforeMayHaveAdded) {
  Input(Card("u1", "Lee") + Card("u2", "Ray"));
  EXPECT_NE(PushTo(store_, 0), kDone);
  EXPECT_EQ(store_.items.size(), 1U);
  options_.policy.dryRun = true;
  EXPECT_EQ(PushAll(), kDone);
  EXPECT_EQ(err(), "1 unchanged, 1 would add\n");
  options_.policy.dryRun = false;
  EXPECT_EQ(PushAll(), kDone);
  EXPECT_EQ(err(), "1 added, 1 unchanged\n");
}

TEST_F(PushTest, NamesThePhoneticNamesThatTheHandheldDoesNotKeep) {
  Input("BEGIN:VCARD\nVERSION:3.0\nN:Sato;Eri;;;\nX-PHONETIC-LAST-NAME:satou\nUID:u\nEND:VCARD\n");
  EXPECT_EQ(PushTo(store_), kDone);
  EXPECT_EQ(err(), "1 added\n");
  store_.forgets = "FURIGANA_LAST_NAME";
  Input("BEGIN:VCARD\nVERSION:3.0\nN:Sato;Eri;;;\nX-PHONETIC-LAST-NAME:sato\nUID:u\nEND:VCARD\n");
  EXPECT_EQ(PushTo(store_), kDone);
  EXPECT_EQ(err(), place(1) + "YomiLastName: the handheld does not keep it\n1 changed\n");
}

}  // namespace
}  // namespace desktop::testing
