#include "handheld/tool/search_command.h"

#include <gmock/gmock.h>

#include <filesystem>
#include <nlohmann/json.hpp>
#include <sstream>

#include "tests/handheld/tool/message_support.h"

namespace tool::testing {
namespace {

using ::testing::HasSubstr;

constexpr char kAnglers[] =
    "BEGIN:VCARD\r\nVERSION:3.0\r\nN:Björkman;Åsa;;;\r\nTEL;TYPE=CELL:+46 (70) 555 01 01\r\n"
    "NOTE:Likes to fish\\nfor salmon in Höga Kusten\r\nBDAY:1971-09-04\r\nCATEGORIES:Friends\r\n"
    "END:VCARD\r\n";
constexpr char kFishing[] =
    "BEGIN:VCALENDAR\r\nVERSION:2.0\r\nPRODID:-//test//EN\r\n"
    "BEGIN:VEVENT\r\nUID:1\r\nDTSTAMP:20080101T000000Z\r\nSUMMARY:Fishing trip\r\n"
    "DTSTART:20080215T090000\r\nDTEND:20080215T100000\r\nRRULE:FREQ=WEEKLY;COUNT=3\r\n"
    "END:VEVENT\r\n"
    "BEGIN:VEVENT\r\nUID:1\r\nDTSTAMP:20080101T000000Z\r\nRECURRENCE-ID:20080222T090000\r\n"
    "SUMMARY:To the lake\r\nDTSTART:20080222T090000\r\nDTEND:20080222T100000\r\nEND:VEVENT\r\n"
    "BEGIN:VTODO\r\nUID:2\r\nDTSTAMP:20080101T000000Z\r\nSUMMARY:Buy bait\r\n"
    "DESCRIPTION:The fish shop closes at six\r\nDUE;VALUE=DATE:20080214\r\nEND:VTODO\r\n"
    "END:VCALENDAR\r\n";

class Searching : public MessageTest {
 protected:
  Searching() {
    Import({WriteFile("people.vcf", kAnglers), WriteFile("calendar.ics", kFishing),
            WriteFile("sms.xml", Backup(Sms(1, "+46705550101", "Did you catch any fish?") +
                                        Sms(2, "+4612345", "No"))),
            WriteFile("calls.xml", CallBackup(CallElement(1, "+46705550101")))});
    const auto folder = HandheldPath() / "files" / "My Documents";
    std::filesystem::create_directories(folder);
    std::ofstream(folder / "lures.txt") << "Which fish takes which lure";
  }
  std::string Find(const std::string& text, Outcome expected = Outcome::kDone, bool json = false) {
    const Outcome outcome = Run([&](Session& session, const Report& report) {
      return Search(session, text, json, report);
    });
    EXPECT_EQ(outcome, expected) << text;
    return out_;
  }
};

TEST_F(Searching, FindsInEverything) {
  EXPECT_EQ(Find("FISH"),
            "contact          1  Björkman, Åsa | Likes to fish\n"
            "appointment      2  2008-02-15 09:00  Fishing trip\n"
            "task             3  2008-02-14  Buy bait | The fish shop closes at six\n"
            "message          8  2008-02-15 13:45  from Åsa Björkman | Did you catch any fish?\n"
            "note                \\My Documents\\lures.txt | Which fish takes which lure\n"
            "5 found\n");
}

TEST_F(Searching, FindsWhateverTheCaseAndTheMarks) {
  EXPECT_THAT(Find("asa BJORK"), HasSubstr("contact          1  Björkman, Åsa\n"));
  EXPECT_THAT(Find("Ásä hoga"), HasSubstr("contact          1  Björkman, Åsa | for salmon in"));
}

TEST_F(Searching, FindsNumbersHoweverTheyAreArranged) {
  for (const char* number : {"+46705550101", "(70) 555", "5550101"}) {
    EXPECT_THAT(Find(number), HasSubstr("contact          1 ")) << number;
  }
  EXPECT_THAT(Find("+46705550101"), HasSubstr("call             1  2008-02-15 13:45  from Åsa"));
}

TEST_F(Searching, FindsOccurrencesDatesAndCategories) {
  EXPECT_EQ(Find("lake"),
            "appointment      2  2008-02-15 09:00  Fishing trip | To the lake\n"
            "1 found\n");
  EXPECT_THAT(Find("1971-09-04"), HasSubstr("contact          1 "));
  EXPECT_THAT(Find("friends"), HasSubstr("contact          1 "));
}

TEST_F(Searching, ShowsWhatAPersonWroteWhenTheNameIsFound) {
  EXPECT_THAT(Find("bjorkman"), HasSubstr("from Åsa Björkman | Did you catch any fish?\n"));
}

TEST_F(Searching, ShowsTheWordsOfALongLine) {
  std::string text;
  for (int i = 0; i < 40; ++i) text += "water ";
  Import({WriteFile("more.xml", Backup(Sms(1, "+461", text + "and a whale " + text)))});
  EXPECT_THAT(Find("whale"), HasSubstr("from +461 | …water and a whale water water"));
}

TEST_F(Searching, EndsWithOneWhenNothingIsFound) {
  EXPECT_EQ(Find("submarine", Outcome::kFailed), "0 found\n");
  EXPECT_EQ(Find("fish submarine", Outcome::kFailed), "0 found\n");
  EXPECT_EQ(Find("submarine", Outcome::kFailed, true), "");
}

TEST_F(Searching, WantsAWord) {
  EXPECT_THROW(Find(" "), UsageError);
}

TEST_F(Searching, GivesAnObjectALine) {
  std::istringstream lines(Find("fish", Outcome::kDone, true));
  std::vector<std::string> kinds;
  for (std::string line; std::getline(lines, line);) {
    const auto object = nlohmann::json::parse(line);
    kinds.push_back(object["kind"]);
    if (kinds.back() == "note") {
      EXPECT_EQ(object["path"], "\\My Documents\\lures.txt");
    } else {
      EXPECT_TRUE(object.contains("oid")) << line;
    }
  }
  EXPECT_THAT(kinds, ::testing::ElementsAre("contact", "appointment", "task", "message", "note"));
}

TEST_F(Searching, NamesANoteThatCannotBeRead) {
  std::ofstream(HandheldPath() / "files" / "My Documents" / "bad.pwi") << "no note";
  Find("fish", Outcome::kPartlyDone);
  EXPECT_THAT(err_, HasSubstr("\\My Documents\\bad.pwi: "));
}

}  // namespace
}  // namespace tool::testing
