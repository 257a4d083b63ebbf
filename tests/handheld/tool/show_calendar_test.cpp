#include "handheld/tool/show_calendar.h"

#include <gmock/gmock.h>

#include <algorithm>
#include <nlohmann/json.hpp>
#include <sstream>

#include "handheld/tool/clock_commands.h"
#include "tests/handheld/tool/item_support.h"

namespace tool::testing {
namespace {

using calendar::PatternType;
using formats::Appointment;
using formats::local_days;
using ::testing::AllOf;
using ::testing::HasSubstr;
using ::testing::Not;
using ::testing::StartsWith;

class ShownCalendar : public ItemTest {
 protected:
  ShownCalendar() : ItemTest({.zone = "Europe/Berlin"}) { SetTime("2026-11-20T12:00:00Z"); }

  void SetTime(const std::string& time) {
    Capture capture;
    EXPECT_EQ(SetClock(*session_, time, capture.report()), Outcome::kDone) << capture.Err();
  }

  void Add(const Appointment& appointment) { StoreIn(appointment, *New<Appointment>().get()); }
  void Add(const std::string& subject, formats::local_seconds start, formats::local_seconds end,
           bool allDay = false) {
    Appointment appointment;
    appointment.subject = subject;
    appointment.start = start;
    appointment.end = end;
    appointment.allDay = allDay;
    Add(appointment);
  }
  // A weekly meeting on Mondays, one left out and one moved, and what takes longer than a day.
  void Fill() {
    Appointment meeting;
    meeting.subject = "Meeting";
    meeting.location = "Room 1";
    meeting.start = At(Day(2026, 11, 2), 9, 30);
    meeting.end = At(Day(2026, 11, 2), 10, 15);
    meeting.series.emplace();
    meeting.series->pattern.type = PatternType::kWeekly;
    meeting.series->pattern.daysOfWeek = 2;
    formats::ChangedOccurrence moved{Day(2026, 11, 16), meeting};
    moved.occurrence.subject = "Meeting with cake";
    moved.occurrence.start = At(Day(2026, 11, 18), 15);
    moved.occurrence.end = At(Day(2026, 11, 18), 16);
    meeting.series->deleted = {Day(2026, 11, 9)};
    meeting.series->changed = {moved};
    Add(meeting);
    Add("Fair", Day(2026, 11, 14), Day(2026, 11, 17), true);
    Add("Night train", At(Day(2026, 11, 15), 22), At(Day(2026, 11, 16), 7, 30));
    Add("Call", At(Day(2026, 11, 14), 12), At(Day(2026, 11, 14), 12));
  }
  std::string Show(const CalendarChoice& choice, bool json = false) {
    RunIn(*session_, [&](Session& session, const Report& report) {
      return ShowCalendar(session, choice, json, report);
    });
    return out_;
  }
};

TEST_F(ShownCalendar, HasEveryOccurrenceOnItsDay) {
  Fill();
  EXPECT_EQ(Show({.from = "2026-11-09", .to = "2026-11-23"}),
            "Saturday 14 November 2026\n"
            "  all day      Fair, day 1 of 3\n"
            "  12:00        Call\n"
            "\n"
            "Sunday 15 November 2026\n"
            "  all day      Fair, day 2 of 3\n"
            "  22:00-       Night train, day 1 of 2\n"
            "\n"
            "Monday 16 November 2026\n"
            "  all day      Fair, day 3 of 3\n"
            "  -07:30       Night train, day 2 of 2\n"
            "\n"
            "Wednesday 18 November 2026\n"
            "  15:00-16:00  Meeting with cake (Room 1)\n"
            "\n"
            "Monday 23 November 2026\n"
            "  09:30-10:15  Meeting (Room 1)\n"
            "\n"
            "5 entries from 2026-11-09 to 2026-11-23\n");
}

TEST_F(ShownCalendar, BeginsWithTodayOfTheHandheldsClockAndZone) {
  SetTime("2026-11-22T23:30:00Z");
  Fill();
  EXPECT_THAT(Show({}), StartsWith("Monday 23 November 2026, today\n"));
  EXPECT_THAT(out_, HasSubstr("4 entries from 2026-11-23 to 2026-12-20\n"));
  EXPECT_THAT(Show({.to = "2026-11-30"}), HasSubstr("2 entries from 2026-11-23 to 2026-11-30\n"));
  EXPECT_THAT(Show({.to = "2026-11-03"}), HasSubstr("1 entry from 2026-10-07 to 2026-11-03\n"));
}

TEST_F(ShownCalendar, SaysWhereTheNextDayIsWhenThereIsNone) {
  Fill();
  EXPECT_EQ(Show({.from = "2026-11-10", .to = "2026-11-13"}),
            "nothing from 2026-11-10 to 2026-11-13; before that on 2026-11-02; after that on "
            "2026-11-14\n");
}

TEST_F(ShownCalendar, HasAMonthAsATableOf80Columns) {
  Fill();
  for (const char* subject : {"One", "Two", "Three", "Four"})
    Add(subject, At(Day(2026, 11, 30), 8), At(Day(2026, 11, 30), 9));
  const std::string month = Show({.month = "2026-11"});
  EXPECT_EQ(month,
            "                                 November 2026\n"
            "   Monday     Tuesday    Wednesday  Thursday   Friday     Saturday   Sunday\n"
            "\n"
            "44                                                                   1\n"
            "\n"
            "45 2          3          4          5          6          7          8\n"
            "   Meeting\n"
            "\n"
            "46 9          10         11         12         13         14         15\n"
            "                                                          Fair       Fair\n"
            "                                                          Call       Night tra…\n"
            "\n"
            "47 16         17         18         19         20*        21         22\n"
            "   Fair                  Meeting w…\n"
            "   Night tra…\n"
            "\n"
            "48 23         24         25         26         27         28         29\n"
            "   Meeting\n"
            "\n"
            "49 30\n"
            "   One\n"
            "   Two\n"
            "   Three\n"
            "   2 more\n");
}

TEST_F(ShownCalendar, HasAWeekWithItsEmptyDays) {
  Fill();
  EXPECT_EQ(Show({.week = "2026-11-22"}),
            "Week 47, from 2026-11-16 to 2026-11-22\n"
            "\n"
            "Mon 16  all day      Fair, day 3 of 3\n"
            "        -07:30       Night train, day 2 of 2\n"
            "Tue 17\n"
            "Wed 18  15:00-16:00  Meeting with cake (Room 1)\n"
            "Thu 19\n"
            "Fri 20*\n"
            "Sat 21\n"
            "Sun 22\n");
}

TEST_F(ShownCalendar, FitsIn80ColumnsWhateverStandsInIt) {
  Add(std::string(300, 'x'), At(Day(2026, 11, 17), 8), At(Day(2026, 11, 19), 9));
  for (const CalendarChoice& choice :
       {CalendarChoice{.month = "2026-11"}, CalendarChoice{.week = "2026-11-17"},
        CalendarChoice{.from = "2026-11-17"}}) {
    std::istringstream lines(Show(choice));
    for (std::string line; std::getline(lines, line);) {
      const auto characters = std::ranges::count_if(
          line, [](char c) { return (static_cast<unsigned char>(c) & 0xC0) != 0x80; });
      EXPECT_LE(characters, 80) << line;
    }
  }
}

TEST_F(ShownCalendar, IsALineOfJsonForEachOccurrence) {
  Fill();
  std::istringstream lines(Show({.from = "2026-11-16", .to = "2027-01-04"}, true));
  std::vector<nlohmann::json> occurrences;
  for (std::string line; std::getline(lines, line);)
    occurrences.push_back(nlohmann::json::parse(line));
  ASSERT_EQ(occurrences.size(), 10u);
  EXPECT_EQ(occurrences[0]["Subject"], "Fair");
  EXPECT_EQ(occurrences[0]["Start"], "2026-11-14");
  EXPECT_EQ(occurrences[2]["Subject"], "Meeting with cake");
  EXPECT_EQ(occurrences[2]["oid"], 1);
  EXPECT_EQ(occurrences[9]["Start"], "2027-01-04T09:30:00");
  for (const nlohmann::json& each : occurrences) EXPECT_FALSE(each.contains("recurrence"));
}

TEST_F(ShownCalendar, ShowsTheSameDaysHoweverManyAreAskedFor) {
  Fill();
  Add("Long", Day(2026, 1, 20), Day(2027, 3, 2), true);
  const auto daysOf = [&](const CalendarChoice& choice) {
    const std::string shown = Show(choice);
    return shown.substr(0, shown.rfind("\n\n"));
  };
  const std::string whole = daysOf({.from = "2026-01-01", .to = "2027-12-31"});
  for (const char* day : {"2026-02-01", "2026-11-15", "2026-11-16", "2027-03-01"})
    EXPECT_THAT(whole, HasSubstr(daysOf({.from = day, .to = day})));
}

TEST_F(ShownCalendar, TellsOfWhatHasNoDay) {
  const auto item = New<Appointment>();
  item->put_Start(ce::kNoDate);
  item->put_End(ce::kNoDate);
  ASSERT_EQ(item->Save(), ce::S_OK);
  EXPECT_THAT(Show({.month = "2026-11"}), HasSubstr("1 appointment without a day: --list shows"));
}

TEST_F(ShownCalendar, SendsNoControlsToATerminal) {
  Appointment odd;
  odd.subject = "a\x1B[31mb\nc";
  odd.location = "\x07";
  odd.start = At(Day(2026, 11, 16), 9);
  odd.end = odd.start;
  Add(odd);
  for (const CalendarChoice& choice :
       {CalendarChoice{.month = "2026-11"}, CalendarChoice{.from = "2026-11-16"}})
    EXPECT_THAT(Show(choice),
                AllOf(Not(HasSubstr("\x1B")), Not(HasSubstr("\x07")), HasSubstr("a [31mb c")));
}

}  // namespace
}  // namespace tool::testing
