// corvane-device as a person calls it: appointments and tasks in, shown, out and away.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <filesystem>

#include "tests/programs/tool_test.h"

namespace corvane::testing {
namespace {

using ::testing::AllOf;
using ::testing::EndsWith;
using ::testing::HasSubstr;

std::string Calendar(const std::string& components) {
  return "BEGIN:VCALENDAR\nVERSION:2.0\nPRODID:-//test//EN\n" + components + "END:VCALENDAR\n";
}

const std::string kReview =
    "BEGIN:VEVENT\nUID:review@desk\nDTSTAMP:20080101T000000Z\nSUMMARY:Review\nLOCATION:Room 1\n"
    "DTSTART:20080215T090000Z\nDTEND:20080215T103000Z\nEND:VEVENT\n";
const std::string kStandup =
    "BEGIN:VEVENT\nUID:standup@desk\nDTSTAMP:20080101T000000Z\nSUMMARY:Standup\n"
    "DTSTART:20080218T090000\nDTEND:20080218T091500\nRRULE:FREQ=WEEKLY;BYDAY=MO,WE;COUNT=6\n"
    "EXDATE:20080220T090000\nEND:VEVENT\n"
    "BEGIN:VEVENT\nUID:standup@desk\nDTSTAMP:20080101T000000Z\nRECURRENCE-ID:20080225T090000\n"
    "SUMMARY:Standup with cake\nDTSTART:20080225T160000\nDTEND:20080225T170000\nEND:VEVENT\n";
const std::string kHoliday =
    "BEGIN:VEVENT\nDTSTAMP:20080101T000000Z\nSUMMARY:Holiday\nDTSTART;VALUE=DATE:20080701\n"
    "DTEND;VALUE=DATE:20080704\nEND:VEVENT\n";
const std::string kShopping =
    "BEGIN:VTODO\nUID:shopping@desk\nDTSTAMP:20080101T000000Z\nSUMMARY:Shopping\n"
    "DUE;VALUE=DATE:20080215\nPRIORITY:1\nEND:VTODO\n";

class DeviceCalendar : public ToolTest {
 protected:
  std::string Shown(const std::string& handheld, const std::string& kind) const {
    const Ended shown = Device({"show", handheld, kind, "--list", "--json"});
    EXPECT_EQ(shown.code, 0) << shown.err;
    return shown.out;
  }
  std::string Everything(const std::string& handheld) const {
    return Shown(handheld, "calendar") + Shown(handheld, "tasks");
  }
};

TEST_F(DeviceCalendar, ImportsAppointmentsAndTasksAndKnowsThemAgain) {
  const std::string handheld = MakeHandheld();
  const std::string file = File("mine.ics", Calendar(kReview + kStandup + kHoliday + kShopping));
  const Ended first = Device({"import", "-v", handheld, file});
  EXPECT_EQ(first.code, 0);
  EXPECT_EQ(first.err, "");
  EXPECT_EQ(first.out,
            "added             1  Review\nadded             2  Standup\n"
            "added             3  Holiday\nadded             4  Shopping\n" +
                file + ": 4 added, 0 changed, 0 unchanged, 0 failed; 0 notices\n");
  const std::string before = Everything(handheld);

  const Ended again = Device({"import", handheld, file});
  EXPECT_EQ(again.code, 0);
  EXPECT_EQ(again.out, file + ": 0 added, 0 changed, 4 unchanged, 0 failed; 0 notices\n");
  EXPECT_EQ(Everything(handheld), before);
}

TEST_F(DeviceCalendar, ShowsTables) {
  const std::string handheld = MakeHandheld();
  Device(
      {"import", handheld, File("mine.ics", Calendar(kReview + kStandup + kHoliday + kShopping))});
  const Ended calendar = Device({"show", handheld, "calendar", "--list"});
  EXPECT_EQ(calendar.code, 0);
  EXPECT_THAT(
      calendar.out,
      AllOf(HasSubstr("1  2008-02-15 09:00-10:30    Review "), HasSubstr(" Room 1 "),
            HasSubstr("2  2008-02-18 09:00-09:15    Standup "),
            HasSubstr("weekly on Mon, Wed until 2008-03-05; 2 exceptions\n"),
            HasSubstr("3  2008-07-01 3 days         Holiday "), HasSubstr("3 appointments\n")));
  EXPECT_EQ(Device({"show", handheld, "appointments", "--list"}).out, calendar.out);
  const Ended tasks = Device({"show", handheld, "tasks"});
  EXPECT_EQ(tasks.code, 0);
  EXPECT_THAT(tasks.out,
              AllOf(HasSubstr("4  [ ]  2008-02-15 high     Shopping "), HasSubstr("1 task\n")));
}

TEST_F(DeviceCalendar, ShowsItsDays) {
  const std::string handheld = MakeHandheld();
  Device(
      {"import", handheld, File("mine.ics", Calendar(kReview + kStandup + kHoliday + kShopping))});
  ASSERT_EQ(Device({"clock", handheld, "set", "2008-02-15T13:45:00Z"}).code, 0);
  const Ended days = Device({"show", handheld, "calendar"});
  EXPECT_EQ(days.code, 0) << days.err;
  EXPECT_EQ(days.out,
            "Friday 15 February 2008, today\n  09:00-10:30  Review (Room 1)\n\n"
            "Monday 18 February 2008\n  09:00-09:15  Standup\n\n"
            "Monday 25 February 2008\n  16:00-17:00  Standup with cake\n\n"
            "Wednesday 27 February 2008\n  09:00-09:15  Standup\n\n"
            "Monday 3 March 2008\n  09:00-09:15  Standup\n\n"
            "Wednesday 5 March 2008\n  09:00-09:15  Standup\n\n"
            "6 entries from 2008-02-15 to 2008-03-13\n");
  EXPECT_EQ(Device({"show", handheld, "appointments"}).out, days.out);
  for (const Arguments& month : {Arguments{"--month"}, Arguments{"--month", "2008-02"},
                                 Arguments{"--month", "2008-02-29"}}) {
    Arguments show{"show", handheld, "calendar"};
    show.insert(show.end(), month.begin(), month.end());
    EXPECT_THAT(Device(show).out, HasSubstr("February 2008\n"));
  }
  EXPECT_THAT(Device({"show", handheld, "calendar", "--week"}).out, HasSubstr("Week 7, from"));
  EXPECT_THAT(Device({"show", handheld, "calendar", "--week", "2008-07-01"}).out,
              HasSubstr("Wed  2  all day      Holiday, day 2 of 3\n"));
  const Ended json = Device({"show", handheld, "calendar", "--json", "--from", "2008-03-05"});
  EXPECT_THAT(json.out, AllOf(HasSubstr("\"Start\":\"2008-03-05T09:00:00\""), EndsWith("}\n")));
  EXPECT_TRUE(IsOneLine(json.out)) << json.out;
}

TEST_F(DeviceCalendar, ShowsNoDaysThatMakeNoSense) {
  const std::string handheld = MakeHandheld();
  const Arguments wrong[] = {
      {"calendar", "--week", "soon"},    {"calendar", "--month", "2008-13"},
      {"calendar", "--month", "--week"}, {"calendar", "--from", "2008-02-15", "--to", "2008-02-14"},
      {"calendar", "--list", "--month"}, {"tasks", "--from", "2008-02-15"}};
  for (const Arguments& words : wrong) {
    Arguments show{"show", handheld};
    show.insert(show.end(), words.begin(), words.end());
    const Ended ended = Device(show);
    EXPECT_EQ(ended.code, 2) << ::testing::PrintToString(words);
    EXPECT_EQ(ended.out, "");
    EXPECT_TRUE(IsOneLine(ended.err)) << ended.err;
  }
}

TEST_F(DeviceCalendar, TakesTimesForItsOwnZone) {
  const std::string handheld = MakeHandheld();
  ASSERT_EQ(Device({"set", handheld, "zone", "Asia/Tokyo"}).code, 0);
  Device({"import", handheld, File("mine.ics", Calendar(kReview))});
  EXPECT_THAT(Device({"show", handheld, "calendar", "--list"}).out,
              HasSubstr("2008-02-15 18:00-19:30"));
}

TEST_F(DeviceCalendar, ExportsWhatImportsAsUnchangedAndElsewhereToTheSame) {
  const std::string from = MakeHandheld("from");
  Device({"import", from, File("mine.ics", Calendar(kReview + kStandup + kHoliday + kShopping))});
  const std::string to = MakeHandheld("to");
  const std::string calendar = Path("calendar.ics");
  const std::string tasks = Path("tasks.ics");
  const Ended out = Device({"export", from, "calendar", "-o", calendar});
  EXPECT_EQ(out.code, 0);
  EXPECT_EQ(out.err, "");
  EXPECT_EQ(out.out, calendar + ": 3 appointments\n");
  EXPECT_EQ(Device({"export", from, "tasks", "-o", tasks}).out, tasks + ": 1 task\n");
  const Ended again = Device({"import", from, calendar, tasks});
  EXPECT_EQ(again.code, 0);
  EXPECT_THAT(again.out, AllOf(HasSubstr("0 added, 0 changed, 3 unchanged, 0 failed; 0 notices"),
                               HasSubstr("0 added, 0 changed, 1 unchanged, 0 failed; 0 notices")));
  EXPECT_EQ(Device({"import", to, calendar, tasks}).code, 0);
  EXPECT_EQ(WithoutOids(Everything(to)), WithoutOids(Everything(from)));
}

TEST_F(DeviceCalendar, SaysWhichOfSeveralFilesFailedAndImportsWhatItCanRead) {
  const std::string handheld = MakeHandheld();
  const std::string broken = File("broken.ics",
                                  "BEGIN:VCALENDAR\nBEGIN:VEVENT\nSUMMARY:No date\nEND:VEVENT\n"
                                  "garbage\n" +
                                      kReview.substr(0, kReview.rfind("END:VEVENT")));
  const Ended partly = Device({"import", handheld, Path("missing.ics"), broken});
  EXPECT_EQ(partly.code, 3);
  EXPECT_THAT(partly.err, AllOf(HasSubstr(Path("missing.ics") + " cannot be read\n"),
                                HasSubstr(broken + ":6: the VEVENT that begins here has no END")));
  EXPECT_THAT(Device({"show", handheld, "calendar", "--list"}).out, HasSubstr("Review"));
  const Ended none = Device({"import", handheld, File("letter.ics", "Dear Ada")});
  EXPECT_EQ(none.code, 1);
  EXPECT_THAT(none.err, HasSubstr("letter.ics: no appointments or tasks in it\n"));
}

TEST_F(DeviceCalendar, TakesCalendarsBesideCards) {
  const std::string handheld = MakeHandheld();
  const Ended both =
      Device({"import", handheld, Sample("people.vcf"), File("calendar", Calendar(kReview))});
  EXPECT_EQ(both.code, 0);
  EXPECT_THAT(Device({"info", handheld}).out,
              HasSubstr("Contacts    27\nCalendar    1\nTasks       0\n"));
}

}  // namespace
}  // namespace corvane::testing
