#include "common/calendar/rule.h"

#include <gtest/gtest.h>
#include <rapidcheck/gtest.h>

#include <limits>
#include <string>

#include "tests/common/calendar/calendar_support.h"

namespace calendar {
namespace {

using std::chrono::days;
using testing::AnyDay;
using testing::AnyEndlessPattern;
using testing::Day;
using testing::WalkedDays;

struct RuleCase {
  const char* name;
  Pattern pattern;
  const char* rule;
};

void PrintTo(const RuleCase& each, std::ostream* out) {
  *out << each.rule;
}

class RuleText : public ::testing::TestWithParam<RuleCase> {};

TEST_P(RuleText, SaysThePattern) {
  ASSERT_TRUE(IsValid(GetParam().pattern));
  EXPECT_EQ(RuleOf(GetParam().pattern), GetParam().rule);
}

INSTANTIATE_TEST_SUITE_P(
    Patterns, RuleText,
    ::testing::Values(
        RuleCase{"Daily", {.type = PatternType::kDaily}, "FREQ=DAILY"},
        RuleCase{"DailyWithANumber",
                 {.type = PatternType::kDaily, .interval = 3, .occurrences = 10},
                 "FREQ=DAILY;INTERVAL=3;COUNT=10"},
        RuleCase{"Weekly",
                 {.type = PatternType::kWeekly, .interval = 2, .daysOfWeek = 2 | 8},
                 "FREQ=WEEKLY;INTERVAL=2;BYDAY=MO,WE;WKST=SU"},
        RuleCase{"EveryWeekday",
                 {.type = PatternType::kWeekly, .daysOfWeek = 127},
                 "FREQ=WEEKLY;BYDAY=SU,MO,TU,WE,TH,FR,SA;WKST=SU"},
        RuleCase{"Monthly",
                 {.type = PatternType::kMonthly, .dayOfMonth = 28},
                 "FREQ=MONTHLY;BYMONTHDAY=28"},
        RuleCase{"TheTwentyNinth",
                 {.type = PatternType::kMonthly, .dayOfMonth = 29},
                 "FREQ=MONTHLY;BYMONTHDAY=28,29;BYSETPOS=-1"},
        RuleCase{"TheThirtieth",
                 {.type = PatternType::kMonthly, .dayOfMonth = 30},
                 "FREQ=MONTHLY;BYMONTHDAY=28,29,30;BYSETPOS=-1"},
        RuleCase{"TheThirtyFirst",
                 {.type = PatternType::kMonthly, .interval = 999, .dayOfMonth = 31},
                 "FREQ=MONTHLY;INTERVAL=999;BYMONTHDAY=-1"},
        RuleCase{"SecondTuesday",
                 {.type = PatternType::kMonthNth, .daysOfWeek = 4, .instance = 2},
                 "FREQ=MONTHLY;BYDAY=2TU"},
        RuleCase{"LastWorkday",
                 {.type = PatternType::kMonthNth, .daysOfWeek = 62, .instance = 5},
                 "FREQ=MONTHLY;BYDAY=MO,TU,WE,TH,FR;BYSETPOS=-1"},
        RuleCase{"Yearly",
                 {.type = PatternType::kYearly, .dayOfMonth = 24, .monthOfYear = 12},
                 "FREQ=YEARLY;BYMONTH=12;BYMONTHDAY=24"},
        RuleCase{"LeapDay",
                 {.type = PatternType::kYearly, .dayOfMonth = 29, .monthOfYear = 2},
                 "FREQ=YEARLY;BYMONTH=2;BYMONTHDAY=-1"},
        RuleCase{"ADayThatTheMonthLacks",
                 {.type = PatternType::kYearly, .dayOfMonth = 31, .monthOfYear = 4},
                 "FREQ=YEARLY;BYMONTH=4;BYMONTHDAY=30"},
        RuleCase{"LastSundayOfMarch",
                 {.type = PatternType::kYearNth,
                  .daysOfWeek = 1,
                  .instance = 5,
                  .monthOfYear = 3,
                  .until = Day(2030, 3, 31)},
                 "FREQ=YEARLY;BYMONTH=3;BYDAY=-1SU;UNTIL=20300331"},
        RuleCase{"FirstWorkdayOfMay",
                 {.type = PatternType::kYearNth, .daysOfWeek = 62, .instance = 1, .monthOfYear = 5},
                 "FREQ=YEARLY;BYMONTH=5;BYDAY=MO,TU,WE,TH,FR;BYSETPOS=1"}),
    [](const auto& test) { return std::string(test.param.name); });

TEST(RuleOf, KeepsTheEndWithinTheDaysThatCanBeTold) {
  Pattern pattern{.type = PatternType::kDaily, .until = Day(9999, 12, 31)};
  EXPECT_EQ(RuleOf(pattern), "FREQ=DAILY;UNTIL=29991231");
  pattern.until = Day(1601, 1, 1);
  EXPECT_EQ(RuleOf(pattern), "FREQ=DAILY;UNTIL=19000101");
  pattern.until.reset();
  pattern.occurrences = std::numeric_limits<int>::max();
  EXPECT_EQ(RuleOf(pattern), "FREQ=DAILY;COUNT=2147483647");
}

// A day of the year that its month lacks comes back as the month's last.
Pattern Plain(Pattern pattern) {
  if (pattern.type != PatternType::kYearly) return pattern;
  constexpr int kLongest[] = {31, 29, 31, 30, 31, 30, 31, 31, 30, 31, 30, 31};
  pattern.dayOfMonth = std::min(pattern.dayOfMonth, kLongest[pattern.monthOfYear - 1]);
  return pattern;
}

RC_GTEST_PROP(PatternOfRule, FindsThePatternThatTheRuleWasMadeOf, ()) {
  Pattern pattern = *AnyEndlessPattern();
  const auto start = NextDayOf(pattern, *AnyDay(1900, 2900), kFirstDay);
  RC_ASSERT(start);
  switch (*rc::gen::inRange(0, 3)) {
    case 0:
      pattern.occurrences = *rc::gen::oneOf(rc::gen::inRange(1, 40), rc::gen::just(2'147'483'647));
      break;
    case 1:
      pattern.until = *start + days{*rc::gen::inRange(0, 30'000)};
      break;
    default:
      break;
  }
  const auto found = PatternOfRule(RuleOf(pattern), *start);
  RC_ASSERT(found);
  if (pattern.until) pattern.until = std::min(*pattern.until, kLastDay);
  RC_ASSERT(*found == Plain(pattern));
  RC_ASSERT(WalkedDays(*found, *start, 30) == WalkedDays(pattern, *start, 30));
}

}  // namespace
}  // namespace calendar
