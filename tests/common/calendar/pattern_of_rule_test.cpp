#include <gtest/gtest.h>
#include <rapidcheck/gtest.h>

#include <limits>
#include <string>

#include "common/calendar/rule.h"
#include "tests/common/calendar/calendar_support.h"

namespace calendar {
namespace {

using testing::Day;

constexpr auto kDaily = PatternType::kDaily;
constexpr auto kWeekly = PatternType::kWeekly;
constexpr auto kMonthly = PatternType::kMonthly;
constexpr auto kMonthNth = PatternType::kMonthNth;
constexpr auto kYearly = PatternType::kYearly;
constexpr auto kYearNth = PatternType::kYearNth;

struct FoundCase {
  const char* name;
  const char* rule;
  local_days start;
  Pattern pattern;
};

void PrintTo(const FoundCase& each, std::ostream* out) {
  *out << each.rule;
}

class PatternOf : public ::testing::TestWithParam<FoundCase> {};

TEST_P(PatternOf, IsFound) {
  const auto pattern = PatternOfRule(GetParam().rule, GetParam().start);
  ASSERT_TRUE(pattern);
  EXPECT_EQ(*pattern, GetParam().pattern);
}

INSTANTIATE_TEST_SUITE_P(
    Days, PatternOf,
    ::testing::Values(
        FoundCase{"EveryDay", "FREQ=DAILY", Day(2024, 1, 31), {.type = kDaily}},
        FoundCase{"EverySeventhDay",
                  "FREQ=DAILY;INTERVAL=7",
                  Day(2024, 1, 31),
                  {.type = kDaily, .interval = 7}},
        // Too long a time for days, not for weeks.
        FoundCase{"EveryFourteenHundredthDay",
                  "FREQ=DAILY;INTERVAL=1400",
                  Day(2024, 1, 31),
                  {.type = kWeekly, .interval = 200, .daysOfWeek = 8}},
        FoundCase{"EveryWorkday",
                  "FREQ=DAILY;BYDAY=MO,TU,WE,TH,FR",
                  Day(2024, 1, 31),
                  {.type = kWeekly, .daysOfWeek = 62}},
        FoundCase{"EverySecondDayThatIsAMonday",
                  "FREQ=DAILY;INTERVAL=2;BYDAY=MO",
                  Day(2024, 1, 29),
                  {.type = kWeekly, .interval = 2, .daysOfWeek = 2}},
        FoundCase{"EveryDayOfTheMonth",
                  "FREQ=DAILY;BYMONTHDAY=1,2,3,4,5,6,7,8,9,10,11,12,13,14,15,16,17,18,19,20,21,22,"
                  "23,24,25,26,27,28,29,30,31",
                  Day(2024, 1, 1),
                  {.type = kDaily}}),
    [](const auto& test) { return std::string(test.param.name); });

INSTANTIATE_TEST_SUITE_P(
    Weeks, PatternOf,
    ::testing::Values(FoundCase{"OfTheStart",
                                "FREQ=WEEKLY",
                                Day(2024, 1, 31),
                                {.type = kWeekly, .daysOfWeek = 8}},
                      FoundCase{"OfDays",
                                "FREQ=WEEKLY;BYDAY=WE,MO;COUNT=1",
                                Day(2024, 1, 31),
                                {.type = kWeekly, .daysOfWeek = 2 | 8, .occurrences = 1}},
                      FoundCase{"WithABeginningThatDoesNotMatter",
                                "FREQ=WEEKLY;BYDAY=SU,MO;WKST=MO",
                                Day(2024, 1, 29),
                                {.type = kWeekly, .daysOfWeek = 1 | 2}},
                      FoundCase{"WithASundayAtEitherEnd",
                                "FREQ=WEEKLY;INTERVAL=2;BYDAY=SU;WKST=MO",
                                Day(2024, 1, 28),
                                {.type = kWeekly, .interval = 2, .daysOfWeek = 1}},
                      FoundCase{"BeginningOnMondayWithoutASunday",
                                "FREQ=WEEKLY;INTERVAL=2;BYDAY=MO,SA;WKST=MO",
                                Day(2024, 1, 29),
                                {.type = kWeekly, .interval = 2, .daysOfWeek = 2 | 64}},
                      FoundCase{"OfAYear",
                                "FREQ=YEARLY;BYDAY=MO",
                                Day(2024, 2, 26),
                                {.type = kWeekly, .daysOfWeek = 2}}),
    [](const auto& test) { return std::string(test.param.name); });

INSTANTIATE_TEST_SUITE_P(
    Months, PatternOf,
    ::testing::Values(
        FoundCase{
            "OfTheStart", "FREQ=MONTHLY", Day(2024, 1, 15), {.type = kMonthly, .dayOfMonth = 15}},
        FoundCase{"LastDay",
                  "FREQ=MONTHLY;BYMONTHDAY=-1",
                  Day(2024, 1, 31),
                  {.type = kMonthly, .dayOfMonth = 31}},
        FoundCase{"LastOfTheLongestList",
                  "FREQ=MONTHLY;BYMONTHDAY=28,29,30,31;BYSETPOS=-1",
                  Day(2024, 1, 31),
                  {.type = kMonthly, .dayOfMonth = 31}},
        // No month is passed over before the end.
        FoundCase{"ThirtyFirstForTwoMonths",
                  "FREQ=MONTHLY;COUNT=2",
                  Day(2023, 12, 31),
                  {.type = kMonthly, .dayOfMonth = 31, .occurrences = 2}},
        // One in two is passed over until the end.
        FoundCase{"ThirtyFirstOfLongMonths",
                  "FREQ=MONTHLY;COUNT=3",
                  Day(2024, 1, 31),
                  {.type = kMonthly, .interval = 2, .dayOfMonth = 31, .occurrences = 3}},
        FoundCase{"ThirtyFirstUntilTheNextMonth",
                  "FREQ=MONTHLY;BYMONTHDAY=31;UNTIL=20240131T120000Z",
                  Day(2023, 12, 31),
                  {.type = kMonthly, .dayOfMonth = 31, .until = Day(2024, 1, 31)}},
        FoundCase{"OfAYear",
                  "FREQ=YEARLY;BYMONTH=1,7;BYMONTHDAY=1",
                  Day(2024, 1, 1),
                  {.type = kMonthly, .interval = 6, .dayOfMonth = 1}},
        FoundCase{"EveryMonthOfAYear",
                  "FREQ=YEARLY;BYMONTHDAY=5",
                  Day(2024, 5, 5),
                  {.type = kMonthly, .dayOfMonth = 5}},
        FoundCase{"EveryTwelfthMonth",
                  "FREQ=MONTHLY;INTERVAL=12;BYMONTHDAY=5",
                  Day(2024, 3, 5),
                  {.type = kMonthly, .interval = 12, .dayOfMonth = 5}},
        FoundCase{"EverySecondYear",
                  "FREQ=YEARLY;INTERVAL=2",
                  Day(2024, 3, 5),
                  {.type = kMonthly, .interval = 24, .dayOfMonth = 5}},
        // A year in which the day is missing never comes.
        FoundCase{"LeapDayEveryTwentiethYear",
                  "FREQ=YEARLY;INTERVAL=20",
                  Day(2004, 2, 29),
                  {.type = kMonthly, .interval = 240, .dayOfMonth = 29}},
        FoundCase{"SecondTuesday",
                  "FREQ=MONTHLY;BYDAY=2TU",
                  Day(2024, 1, 9),
                  {.type = kMonthNth, .daysOfWeek = 4, .instance = 2}},
        FoundCase{"SecondTuesdayByPosition",
                  "FREQ=MONTHLY;BYDAY=TU;BYSETPOS=2",
                  Day(2024, 1, 9),
                  {.type = kMonthNth, .daysOfWeek = 4, .instance = 2}},
        FoundCase{"SecondTuesdayByItsDays",
                  "FREQ=MONTHLY;BYDAY=TU;BYMONTHDAY=8,9,10,11,12,13,14",
                  Day(2024, 1, 9),
                  {.type = kMonthNth, .daysOfWeek = 4, .instance = 2}},
        FoundCase{"LastFriday",
                  "FREQ=MONTHLY;BYDAY=-1FR;COUNT=1",
                  Day(2024, 1, 26),
                  {.type = kMonthNth, .daysOfWeek = 32, .instance = 5, .occurrences = 1}},
        FoundCase{"LastWorkday",
                  "FREQ=MONTHLY;BYDAY=MO,TU,WE,TH,FR;BYSETPOS=-1",
                  Day(2024, 1, 31),
                  {.type = kMonthNth, .daysOfWeek = 62, .instance = 5}},
        FoundCase{"FourthMondayOfEverySecondYear",
                  "FREQ=YEARLY;INTERVAL=2;BYMONTH=5;BYDAY=4MO",
                  Day(2024, 5, 27),
                  {.type = kMonthNth, .interval = 24, .daysOfWeek = 2, .instance = 4}}),
    [](const auto& test) { return std::string(test.param.name); });

INSTANTIATE_TEST_SUITE_P(
    Years, PatternOf,
    ::testing::Values(
        FoundCase{"OfTheStart",
                  "FREQ=YEARLY",
                  Day(2024, 3, 5),
                  {.type = kYearly, .dayOfMonth = 5, .monthOfYear = 3}},
        FoundCase{"OfADay",
                  "FREQ=YEARLY;BYMONTH=12;BYMONTHDAY=24",
                  Day(2024, 12, 24),
                  {.type = kYearly, .dayOfMonth = 24, .monthOfYear = 12}},
        FoundCase{"OfAMonth",
                  "FREQ=MONTHLY;BYMONTH=3;BYMONTHDAY=5",
                  Day(2024, 3, 5),
                  {.type = kYearly, .dayOfMonth = 5, .monthOfYear = 3}},
        FoundCase{"LastDay",
                  "FREQ=YEARLY;BYYEARDAY=-1",
                  Day(2024, 12, 31),
                  {.type = kYearly, .dayOfMonth = 31, .monthOfYear = 12}},
        FoundCase{"LastDayOfFebruary",
                  "FREQ=YEARLY;BYMONTH=2;BYMONTHDAY=-1",
                  Day(2024, 2, 29),
                  {.type = kYearly, .dayOfMonth = 29, .monthOfYear = 2}},
        FoundCase{"LeapDayOnce",
                  "FREQ=YEARLY;COUNT=1",
                  Day(2024, 2, 29),
                  {.type = kYearly, .dayOfMonth = 29, .monthOfYear = 2, .occurrences = 1}},
        FoundCase{"FourthMondayOfFebruary",
                  "FREQ=YEARLY;BYMONTH=2;BYDAY=4MO",
                  Day(2024, 2, 26),
                  {.type = kYearNth, .daysOfWeek = 2, .instance = 4, .monthOfYear = 2}},
        FoundCase{"LastMondayOfFebruary",
                  "FREQ=YEARLY;BYMONTH=2;BYDAY=-1MO",
                  Day(2024, 2, 26),
                  {.type = kYearNth, .daysOfWeek = 2, .instance = 5, .monthOfYear = 2}},
        FoundCase{"FirstMondayOfMarchByItsDays",
                  "FREQ=MONTHLY;BYMONTH=3;BYDAY=MO;BYMONTHDAY=1,2,3,4,5,6,7",
                  Day(2024, 3, 4),
                  {.type = kYearNth, .daysOfWeek = 2, .instance = 1, .monthOfYear = 3}},
        FoundCase{"LastWorkdayOfMay",
                  "FREQ=YEARLY;BYMONTH=5;BYDAY=MO,TU,WE,TH,FR;BYSETPOS=-1",
                  Day(2024, 5, 31),
                  {.type = kYearNth, .daysOfWeek = 62, .instance = 5, .monthOfYear = 5}}),
    [](const auto& test) { return std::string(test.param.name); });

INSTANTIATE_TEST_SUITE_P(
    Texts, PatternOf,
    ::testing::Values(FoundCase{"InSmallLetters",
                                "freq=weekly;byday=mo",
                                Day(2024, 1, 29),
                                {.type = kWeekly, .daysOfWeek = 2}},
                      FoundCase{"InAnyOrder",
                                "BYDAY=MO;INTERVAL=02;FREQ=WEEKLY",
                                Day(2024, 1, 29),
                                {.type = kWeekly, .interval = 2, .daysOfWeek = 2}},
                      FoundCase{"WithATail",
                                "FREQ=DAILY;COUNT=3; ;\r\n",
                                Day(2024, 1, 1),
                                {.type = kDaily, .occurrences = 3}},
                      FoundCase{"WithAVeryLateEnd",
                                "FREQ=DAILY;UNTIL=99991231T235959Z",
                                Day(2024, 1, 1),
                                {.type = kDaily, .until = kLastDay}},
                      FoundCase{"WithALocalEnd",
                                "FREQ=DAILY;UNTIL=20240301T000000",
                                Day(2024, 1, 1),
                                {.type = kDaily, .until = Day(2024, 3, 1)}},
                      FoundCase{"WithALateStart",
                                "FREQ=MONTHLY;INTERVAL=5",
                                Day(2999, 12, 15),
                                {.type = kMonthly, .interval = 5, .dayOfMonth = 15}}),
    [](const auto& test) { return std::string(test.param.name); });

struct NoneCase {
  const char* name;
  const char* rule;
  local_days start = Day(2024, 1, 31);
};

void PrintTo(const NoneCase& each, std::ostream* out) {
  *out << each.rule;
}

class NoPatternOf : public ::testing::TestWithParam<NoneCase> {};

TEST_P(NoPatternOf, IsFound) {
  EXPECT_FALSE(PatternOfRule(GetParam().rule, GetParam().start));
}

INSTANTIATE_TEST_SUITE_P(
    Rules, NoPatternOf,
    ::testing::Values(
        NoneCase{"WithMonthsPassedOver", "FREQ=MONTHLY;BYMONTHDAY=31"},
        NoneCase{"WithMonthsPassedOverBeforeTheEnd", "FREQ=MONTHLY;COUNT=3", Day(2023, 12, 31)},
        NoneCase{"OfLeapDays", "FREQ=YEARLY", Day(2024, 2, 29)},
        NoneCase{"OfLeapDaysInLeapYears", "FREQ=YEARLY;INTERVAL=4", Day(2024, 2, 29)},
        // 2700 is the first year without the day.
        NoneCase{"OfLeapDaysForLong", "FREQ=YEARLY;INTERVAL=28", Day(2000, 2, 29)},
        NoneCase{"OfTheDayBeforeTheLast", "FREQ=MONTHLY;BYMONTHDAY=-2", Day(2024, 1, 30)},
        NoneCase{"OfTwoDays", "FREQ=MONTHLY;BYMONTHDAY=1,15", Day(2024, 1, 1)},
        NoneCase{"OfFifthFridays", "FREQ=MONTHLY;BYDAY=5FR", Day(2024, 3, 29)},
        NoneCase{"OfTwoTuesdays", "FREQ=MONTHLY;BYDAY=1TU,3TU", Day(2024, 1, 2)},
        NoneCase{"OfTuesdaysAfterTheFirst", "FREQ=MONTHLY;BYDAY=TU;BYMONTHDAY=2,3,4,5,6,7,8",
                 Day(2024, 1, 2)},
        NoneCase{"OfFridaysTheThirteenth", "FREQ=MONTHLY;BYDAY=FR;BYMONTHDAY=13", Day(2024, 9, 13)},
        NoneCase{"OfTheWeekBeforeTheLast", "FREQ=MONTHLY;BYDAY=-2FR", Day(2024, 1, 19)},
        NoneCase{"OfWeeksThatBeginOnMonday", "FREQ=WEEKLY;INTERVAL=2;BYDAY=SU,MO;WKST=MO",
                 Day(2024, 1, 29)},
        NoneCase{"OfWeeksThatBeginOnMondayUnsaid", "FREQ=WEEKLY;INTERVAL=2;BYDAY=SU,MO",
                 Day(2024, 1, 29)},
        NoneCase{"OfSomeMonths", "FREQ=WEEKLY;BYMONTH=6,7,8"},
        NoneCase{"OfAWeekOfTheYear", "FREQ=YEARLY;BYWEEKNO=20;BYDAY=MO", Day(2024, 5, 13)},
        NoneCase{"OfAWeekdayOfTheYear", "FREQ=YEARLY;BYDAY=20MO", Day(2024, 5, 13)},
        NoneCase{"OfADayOfTheYear", "FREQ=YEARLY;BYYEARDAY=100", Day(2024, 4, 9)},
        NoneCase{"OfEverySecondWorkday", "FREQ=DAILY;INTERVAL=2;BYDAY=MO,TU,WE,TH,FR"},
        NoneCase{"OfTooManyMonths", "FREQ=YEARLY;INTERVAL=84", Day(2024, 1, 1)},
        NoneCase{"OfTooManyDays", "FREQ=DAILY;INTERVAL=1000"}, NoneCase{"OfHours", "FREQ=HOURLY"},
        NoneCase{"OfMinutes", "FREQ=MINUTELY;INTERVAL=1440"},
        NoneCase{"OfSeconds", "FREQ=SECONDLY"}, NoneCase{"OfADaysHours", "FREQ=DAILY;BYHOUR=9,17"},
        NoneCase{"ThatEndsBeforeItBegins", "FREQ=DAILY;UNTIL=20240130"},
        NoneCase{"ThatNeverComes", "FREQ=YEARLY;BYMONTH=2;BYMONTHDAY=30"}),
    [](const auto& test) { return std::string(test.param.name); });

TEST(PatternOfRule, RefusesWhatIsNoRule) {
  for (const char* rule : {"",
                           ";",
                           "FREQ",
                           "FREQ=",
                           "FREQ=NEVER",
                           "INTERVAL=2",
                           "FREQ=DAILY;FREQ=WEEKLY",
                           "FREQ=DAILY;;COUNT=2",
                           " FREQ=DAILY",
                           "FREQ=DAILY;INTERVAL=0",
                           "FREQ=DAILY;INTERVAL=-1",
                           "FREQ=DAILY;INTERVAL=3x",
                           "FREQ=DAILY;INTERVAL=99999999999999999999",
                           "FREQ=DAILY;COUNT=0",
                           "FREQ=DAILY;COUNT=2147483648",
                           "FREQ=DAILY;COUNT=+1",
                           "FREQ=DAILY;COUNT=1;UNTIL=20240401",
                           "FREQ=DAILY;UNTIL=2024",
                           "FREQ=DAILY;UNTIL=20240230",
                           "FREQ=DAILY;UNTIL=20240401T",
                           "FREQ=DAILY;UNTIL=20240401T240000",
                           "FREQ=DAILY;UNTIL=20240401T120000ZZ",
                           "FREQ=DAILY;UNTIL=20240401Z",
                           "FREQ=WEEKLY;BYDAY=",
                           "FREQ=WEEKLY;BYDAY=XX",
                           "FREQ=WEEKLY;BYDAY=MO,",
                           "FREQ=WEEKLY;BYDAY= MO",
                           "FREQ=WEEKLY;BYDAY=1MO",
                           "FREQ=WEEKLY;BYDAY=MO;BYSETPOS=1",
                           "FREQ=WEEKLY;WKST=ZZ",
                           "FREQ=MONTHLY;BYMONTHDAY=0",
                           "FREQ=MONTHLY;BYMONTHDAY=32",
                           "FREQ=MONTHLY;BYMONTHDAY=1,,2",
                           "FREQ=MONTHLY;BYDAY=99TU",
                           "FREQ=YEARLY;BYMONTH=13",
                           "FREQ=YEARLY;BYMONTH=5L",
                           "FREQ=YEARLY;BYDAY=1MO;BYMONTHDAY=1",
                           "RSCALE=HEBREW;FREQ=YEARLY",
                           "FREQ=DAILY;SKIP=BACKWARD",
                           "FREQ=DAILY;X-OWN=1",
                           "RRULE:FREQ=DAILY"}) {
    EXPECT_FALSE(PatternOfRule(rule, Day(2024, 1, 1))) << rule;
  }
  EXPECT_FALSE(PatternOfRule(std::string_view("FREQ=DAILY\0", 11), Day(2024, 1, 1)));
  EXPECT_FALSE(PatternOfRule("FREQ=DAILY", kFirstDay - std::chrono::days{1}));
  EXPECT_FALSE(PatternOfRule("FREQ=DAILY", kLastDay + std::chrono::days{1}));
}

// None of them falls on any day; a search through all years would take long.
TEST(PatternOfRule, GivesUpOnRulesWithoutDays) {
  for (const char* rule :
       {"FREQ=DAILY;BYMONTH=2;BYMONTHDAY=30", "FREQ=MONTHLY;BYMONTH=4,6;BYMONTHDAY=31",
        "FREQ=MONTHLY;BYDAY=SU,MO,TU,WE,TH,FR,SA;BYSETPOS=33",
        "FREQ=YEARLY;BYMONTH=1;BYDAY=SU,MO,TU,WE,TH,FR,SA;BYSETPOS=366",
        "FREQ=YEARLY;BYYEARDAY=1,2,3;BYSETPOS=300", "FREQ=WEEKLY;BYDAY=MO;BYMONTHDAY=30",
        "FREQ=DAILY;BYYEARDAY=366", "FREQ=YEARLY;BYMONTH=1;BYDAY=53MO"}) {
    EXPECT_FALSE(PatternOfRule(rule, Day(2024, 1, 1))) << rule;
  }
}

TEST(PatternOfRule, TakesListsOfAnyLength) {
  std::string rule = "FREQ=YEARLY;BYYEARDAY=1";
  for (int day = 2; day <= 366; ++day) rule += ',' + std::to_string(day);
  EXPECT_EQ(PatternOfRule(rule, Day(2024, 1, 1)), Pattern{});
  EXPECT_FALSE(PatternOfRule(rule + "," + rule.substr(22), Day(2024, 1, 1)));
  EXPECT_FALSE(PatternOfRule("FREQ=DAILY;BYDAY=" + std::string(100'000, 'M'), Day(2024, 1, 1)));
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
  const local_days start = *testing::AnyDay(1900, 2999);
  const auto pattern = PatternOfRule(rule, start);
  RC_ASSERT(!pattern || (IsValid(*pattern) && NextDayOf(*pattern, start, start)));
}

}  // namespace
}  // namespace calendar
