#include "common/formats/icalendar/pattern_rule.h"

#include <gtest/gtest.h>
#include <rapidcheck/gtest.h>

#include <string>

#include "tests/common/formats/icalendar/calendar_support.h"

namespace formats::testing {
namespace {

std::string PatternOf(const std::string& rule, const std::string& start) {
  const CalendarFile file = ReadLines(
      "BEGIN:VEVENT\nDTSTART:" + start + "T000000\nRRULE:" + rule + "\nEND:VEVENT\n", "UTC");
  if (file.appointments.empty() || !file.appointments[0].appointment.series) return "none";
  const Appointment& read = file.appointments[0].appointment;
  std::string shown = ShowRule(read.series->pattern) + " |";
  const calendar::SeriesDays days(read.series->pattern, DayOf(*read.start));
  for (std::int64_t n = 0; n < std::min<std::int64_t>(days.size(), 3); ++n) {
    shown += ' ' + IsoDate(days[n]);
  }
  return shown;
}

TEST(PatternOfRule, IsThatOfTheLine) {
  ForEachCase("rules.txt", [](const Strings& each) {
    const std::string days = each[3].empty() ? "" : " | " + each[3];
    EXPECT_EQ(PatternOf(each[0], each[1]), each[2] + days);
  });
}

std::optional<calendar::Pattern> PatternOfText(const std::string& text, local_days start) {
  const std::optional<RecurrenceRule> rule = RecurrenceRule::Parse(text);
  return rule ? PatternOfRule(*rule, {}, start) : std::nullopt;
}

TEST(PatternOfRule, TakesListsOfAnyLength) {
  std::string rule = "FREQ=YEARLY;BYYEARDAY=1";
  for (int day = 2; day <= 366; ++day) rule += ',' + std::to_string(day);
  EXPECT_EQ(PatternOfText(rule, Day(2024, 1, 1)), calendar::Pattern{});
  EXPECT_FALSE(PatternOfText(rule + "," + rule.substr(22), Day(2024, 1, 1)));
  EXPECT_FALSE(PatternOfText("FREQ=DAILY;BYDAY=" + std::string(100'000, 'M'), Day(2024, 1, 1)));
}

TEST(PatternOfRule, HasNoneForAStartThatNoHandheldKeeps) {
  EXPECT_FALSE(PatternOfText("FREQ=DAILY", calendar::kFirstDay - std::chrono::days(1)));
  EXPECT_FALSE(PatternOfText("FREQ=DAILY", calendar::kLastDay + std::chrono::days(1)));
}

TEST(PatternOfRule, HasNoneThatComesNoMore) {
  EXPECT_TRUE(PatternOfText("FREQ=YEARLY;BYYEARDAY=14", Day(2999, 1, 14)));
  EXPECT_FALSE(PatternOfText("FREQ=YEARLY;BYYEARDAY=7", Day(2999, 1, 14)));
}

RC_GTEST_PROP(PatternOfRule, TakesAnyText, ()) {
  const auto piece = rc::gen::element<std::string>(
      "FREQ=", "DAILY", "WEEKLY", "MONTHLY", "YEARLY", ";", ";INTERVAL=", "2", "31", "-1", ",",
      ";BYDAY=", "MO", "2TU",
      ";BYMONTHDAY=", ";BYMONTH=", ";BYSETPOS=", ";BYYEARDAY=", ";COUNT=", ";UNTIL=", "20240401",
      "T120000Z", ";WKST=", "SU", "999999999", "=", "\0", "\xFF");
  std::string rule = *rc::gen::element<std::string>("FREQ=DAILY", "FREQ=WEEKLY", "FREQ=MONTHLY",
                                                    "FREQ=YEARLY", "");
  for (const std::string& each : *rc::gen::container<std::vector<std::string>>(piece)) rule += each;
  const int year = *rc::gen::inRange(1900, 3000);
  const local_days start = Day(year, 1, 1) + std::chrono::days(*rc::gen::inRange(0, 365));
  const auto pattern = PatternOfText(rule, start);
  RC_ASSERT(!pattern || (IsValid(*pattern) && NextDayOf(*pattern, start, start)));
}

TEST(RuleOf, SaysADayThatItsMonthLacksAsTheLast) {
  using calendar::PatternType;
  EXPECT_EQ(RuleOf({.type = PatternType::kYearly, .dayOfMonth = 31, .monthOfYear = 4}),
            "FREQ=YEARLY;BYMONTH=4;BYMONTHDAY=30");
  EXPECT_EQ(RuleOf({.occurrences = 2'147'483'647}), "FREQ=DAILY;COUNT=2147483647");
}

}  // namespace
}  // namespace formats::testing
