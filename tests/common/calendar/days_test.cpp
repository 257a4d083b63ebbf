#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <rapidcheck/gtest.h>

#include <future>
#include <limits>
#include <string>
#include <vector>

#include "common/calendar/pattern.h"
#include "tests/common/calendar/calendar_support.h"

namespace calendar {
namespace {

using std::chrono::days;
using testing::AnyDay;
using testing::AnyEndlessPattern;
using testing::CountedDays;
using testing::Day;
using testing::Text;
using testing::Texts;
using testing::WalkedDays;

constexpr int kSunday = 1;
constexpr int kMonday = 2;
constexpr int kTuesday = 4;
constexpr int kFriday = 32;
constexpr int kWorkdays = 62;
constexpr std::size_t kAll = std::numeric_limits<std::size_t>::max();

struct DaysCase {
  const char* name;
  Pattern pattern;
  local_days start;
  std::vector<std::string> days;  // the first ones
};

void PrintTo(const DaysCase& each, std::ostream* out) {
  *out << each.name;
}

class DaysOf : public ::testing::TestWithParam<DaysCase> {};

TEST_P(DaysOf, AreTheDefinitions) {
  const DaysCase& each = GetParam();
  ASSERT_TRUE(IsValid(each.pattern));
  EXPECT_EQ(Texts(WalkedDays(each.pattern, each.start, each.days.size())), each.days);
}

INSTANTIATE_TEST_SUITE_P(
    Patterns, DaysOf,
    ::testing::Values(
        DaysCase{"EveryThirdDay",
                 {.type = PatternType::kDaily, .interval = 3},
                 Day(2024, 2, 27),
                 {"2024-02-27", "2024-03-01", "2024-03-04"}},
        // The week of the start is its first, and begins on a Sunday.
        DaysCase{"EverySecondWeekFromASunday",
                 {.type = PatternType::kWeekly, .interval = 2, .daysOfWeek = kSunday | kMonday},
                 Day(2024, 3, 3),
                 {"2024-03-03", "2024-03-04", "2024-03-17", "2024-03-18"}},
        DaysCase{"EverySecondWeekFromASaturday",
                 {.type = PatternType::kWeekly, .interval = 2, .daysOfWeek = kSunday | kMonday},
                 Day(2024, 3, 9),
                 {"2024-03-17", "2024-03-18", "2024-03-31"}},
        DaysCase{"TheThirtyFirst",
                 {.type = PatternType::kMonthly, .dayOfMonth = 31},
                 Day(2023, 12, 31),
                 {"2023-12-31", "2024-01-31", "2024-02-29", "2024-03-31", "2024-04-30"}},
        DaysCase{"TheThirtieth",
                 {.type = PatternType::kMonthly, .dayOfMonth = 30},
                 Day(2023, 1, 1),
                 {"2023-01-30", "2023-02-28", "2023-03-30"}},
        DaysCase{"TheTwentyNinthOfEverySixthMonth",
                 {.type = PatternType::kMonthly, .interval = 6, .dayOfMonth = 29},
                 Day(2023, 2, 10),
                 {"2023-02-28", "2023-08-29", "2024-02-29"}},
        DaysCase{"LeapDay",
                 {.type = PatternType::kYearly, .dayOfMonth = 29, .monthOfYear = 2},
                 Day(2096, 2, 29),
                 {"2096-02-29", "2097-02-28", "2098-02-28", "2099-02-28", "2100-02-28",
                  "2101-02-28", "2102-02-28", "2103-02-28", "2104-02-29"}},
        DaysCase{"ThirtyFirstOfApril",
                 {.type = PatternType::kYearly, .dayOfMonth = 31, .monthOfYear = 4},
                 Day(2024, 5, 1),
                 {"2025-04-30", "2026-04-30"}},
        DaysCase{"SecondTuesday",
                 {.type = PatternType::kMonthNth, .daysOfWeek = kTuesday, .instance = 2},
                 Day(2024, 1, 10),
                 {"2024-02-13", "2024-03-12"}},
        DaysCase{"LastFriday",
                 {.type = PatternType::kMonthNth, .daysOfWeek = kFriday, .instance = 5},
                 Day(2024, 2, 1),
                 {"2024-02-23", "2024-03-29", "2024-04-26", "2024-05-31"}},
        DaysCase{"FirstWorkday",
                 {.type = PatternType::kMonthNth, .daysOfWeek = kWorkdays, .instance = 1},
                 Day(2024, 6, 1),
                 {"2024-06-03", "2024-07-01", "2024-08-01", "2024-09-02"}},
        DaysCase{"LastDayOfAnyKind",
                 {.type = PatternType::kMonthNth, .daysOfWeek = 127, .instance = 5},
                 Day(2024, 2, 1),
                 {"2024-02-29", "2024-03-31", "2024-04-30"}},
        DaysCase{
            "FourthThursdayOfNovember",
            {.type = PatternType::kYearNth, .daysOfWeek = 16, .instance = 4, .monthOfYear = 11},
            Day(2024, 1, 1),
            {"2024-11-28", "2025-11-27"}},
        DaysCase{"LastWorkdayOfMay",
                 {.type = PatternType::kYearNth,
                  .daysOfWeek = kWorkdays,
                  .instance = 5,
                  .monthOfYear = 5},
                 Day(2024, 1, 1),
                 {"2024-05-31", "2025-05-30", "2026-05-29"}}),
    [](const auto& test) { return std::string(test.param.name); });

RC_GTEST_PROP(DayWalk, AgreesWithTheDefinition, ()) {
  const Pattern pattern = *AnyEndlessPattern();
  const local_days start = *AnyDay(1900, 2990);
  const auto walked = WalkedDays(pattern, start, 60);
  RC_ASSERT(!walked.empty() || start > Day(2900, 1, 1));
  const local_days last = walked.size() < 60 ? kLastDay : walked.back();
  RC_ASSERT(walked == CountedDays(pattern, start, last, 60));
}

RC_GTEST_PROP(IsDayOf, AgreesWithTheDefinitionFarFromTheStart, ()) {
  const Pattern pattern = *AnyEndlessPattern();
  const local_days start = *AnyDay(1900, 2990);
  const auto number = [](local_days day) { return day.time_since_epoch().count(); };
  const local_days day{days{*rc::gen::inRange(number(start), number(kLastDay) + 1)}};
  RC_ASSERT(IsDayOf(pattern, start, day) == testing::FallsOn(pattern, start, day));
  const auto next = NextDayOf(pattern, start, day);
  local_days expected = day;
  while (expected <= kLastDay && !testing::FallsOn(pattern, start, expected)) expected += days{1};
  RC_ASSERT(next == (expected > kLastDay ? std::nullopt : std::optional(expected)));
}

RC_GTEST_PROP(LastDayOf, AgreesWithTheDefinitionForADate, ()) {
  Pattern pattern = *AnyEndlessPattern();
  const local_days start = *AnyDay(1900, 2990);
  pattern.until = start + days{*rc::gen::inRange(-10, 20'000)};
  const auto expected = CountedDays(pattern, start, kLastDay, kAll);
  const auto last = LastDayOf(pattern, start);
  RC_ASSERT(CountDaysOf(pattern, start) == static_cast<int>(expected.size()));
  RC_ASSERT(last == (expected.empty() ? std::nullopt : std::optional(expected.back())));
  const local_days day = start + days{*rc::gen::inRange(0, 20'000)};
  RC_ASSERT(IsDayOf(pattern, start, day) ==
            std::binary_search(expected.begin(), expected.end(), day));
}

RC_GTEST_PROP(LastDayOf, AgreesWithTheDefinitionForANumber, ()) {
  Pattern pattern = *AnyEndlessPattern();
  const local_days start = *AnyDay(1900, 2990);
  pattern.occurrences = *rc::gen::inRange(1, 500);
  const auto expected = CountedDays(pattern, start, kLastDay, kAll);
  const auto last = LastDayOf(pattern, start);
  RC_ASSERT(CountDaysOf(pattern, start) == static_cast<int>(expected.size()));
  RC_ASSERT(last == (expected.empty() ? std::nullopt : std::optional(expected.back())));
  RC_ASSERT(WalkedDays(pattern, start, 40) ==
            CountedDays(pattern, start, expected.empty() ? kLastDay : expected.back(), 40));
  if (!last) return;
  RC_ASSERT(IsDayOf(pattern, start, *last));
  RC_ASSERT(!NextDayOf(pattern, start, *last + days{1}));
}

TEST(DayWalk, EndsAtTheLastDayThatCanBeTold) {
  Pattern pattern{.type = PatternType::kDaily};
  EXPECT_EQ(Texts(WalkedDays(pattern, Day(2999, 12, 30), kAll)),
            (std::vector<std::string>{"2999-12-30", "2999-12-31"}));
  pattern.occurrences = std::numeric_limits<int>::max();
  EXPECT_EQ(WalkedDays(pattern, Day(2990, 1, 1), kAll).size(), 3652u);
}

TEST(DayWalk, GoesThroughAllCenturies) {
  const Pattern pattern{.type = PatternType::kMonthly, .dayOfMonth = 31};
  const auto walked = WalkedDays(pattern, kFirstDay, kAll);
  EXPECT_EQ(walked.size(), 1100u * 12);
  EXPECT_EQ(walked, CountedDays(pattern, kFirstDay, kLastDay, kAll));
}

TEST(DayWalk, HasNothingBeyondTheDaysThatCanBeTold) {
  const Pattern pattern{.type = PatternType::kMonthly, .dayOfMonth = 31};
  EXPECT_TRUE(WalkedDays(pattern, kLastDay + days{1}, 1).empty());
  EXPECT_EQ(Texts(WalkedDays(pattern, kLastDay, kAll)), std::vector<std::string>{"2999-12-31"});
  EXPECT_FALSE(NextDayOf(pattern, kFirstDay, kLastDay + days{1}));
  EXPECT_FALSE(NextDayOf(pattern, kLastDay + days{1}, kFirstDay));
}

TEST(DayWalk, StaysAtItsEnd) {
  const Pattern pattern{.type = PatternType::kDaily, .until = Day(2024, 1, 1)};
  DayWalk walk(pattern, Day(2024, 1, 1));
  EXPECT_EQ(walk.Next(), Day(2024, 1, 1));
  for (int i = 0; i < 40; ++i) EXPECT_FALSE(walk.Next());
}

TEST(CountDaysOf, CountsMoreThanCanBeWalked) {
  const int kDays = static_cast<int>((kLastDay - kFirstDay).count()) + 1;
  for (const int interval : {1, 7, 999}) {
    const Pattern pattern{.type = PatternType::kDaily,
                          .interval = interval,
                          .occurrences = std::numeric_limits<int>::max()};
    EXPECT_EQ(CountDaysOf(pattern, kFirstDay), (kDays - 1) / interval + 1);
    EXPECT_EQ(LastDayOf(pattern, kFirstDay), kFirstDay + days{(kDays - 1) / interval * interval});
  }
}

TEST(CountDaysOf, IsOneForEachOccurrenceThatFits) {
  Pattern pattern{.type = PatternType::kYearly, .dayOfMonth = 1, .monthOfYear = 1};
  pattern.occurrences = 5;
  EXPECT_EQ(CountDaysOf(pattern, Day(2990, 1, 1)), 5);
  EXPECT_EQ(CountDaysOf(pattern, Day(2998, 1, 2)), 1);
  EXPECT_EQ(CountDaysOf(pattern, Day(2999, 1, 2)), 0);
  EXPECT_FALSE(LastDayOf(pattern, Day(2999, 1, 2)));
}

TEST(CountDaysOf, SaysNothingOfASeriesWithoutAnEnd) {
  EXPECT_FALSE(CountDaysOf({}, kFirstDay));
  EXPECT_FALSE(LastDayOf({}, kFirstDay));
}

TEST(CountDaysOf, IsNoneWhenTheEndLiesBeforeTheStart) {
  const Pattern pattern{.type = PatternType::kDaily, .until = Day(2023, 12, 31)};
  EXPECT_EQ(CountDaysOf(pattern, Day(2024, 1, 1)), 0);
  EXPECT_FALSE(LastDayOf(pattern, Day(2024, 1, 1)));
  EXPECT_FALSE(NextDayOf(pattern, Day(2024, 1, 1), Day(2024, 1, 1)));
}

TEST(NextDayOf, CountsFromTheStartForADayBeforeIt) {
  const Pattern pattern{.type = PatternType::kWeekly, .daysOfWeek = kMonday};
  EXPECT_EQ(NextDayOf(pattern, Day(2024, 1, 2), Day(1990, 1, 1)), Day(2024, 1, 8));
  EXPECT_FALSE(IsDayOf(pattern, Day(2024, 1, 2), Day(2024, 1, 1)));
}

TEST(DayWalk, MayRunInSeveralThreads) {
  const Pattern pattern{.type = PatternType::kMonthNth, .daysOfWeek = kWorkdays, .instance = 5};
  const auto expected = CountedDays(pattern, kFirstDay, kLastDay, 300);
  std::vector<std::future<std::vector<local_days>>> walks;
  for (int i = 0; i < 4; ++i) {
    walks.push_back(
        std::async(std::launch::async, [&] { return WalkedDays(pattern, kFirstDay, 300); }));
  }
  for (auto& walk : walks) EXPECT_EQ(walk.get(), expected);
}

}  // namespace
}  // namespace calendar
