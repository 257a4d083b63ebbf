#include <gtest/gtest.h>
#include <rapidcheck/gtest.h>

#include <cstdint>
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
using testing::PatternOf;
using testing::Text;
using testing::ToldDays;

constexpr std::size_t kAll = 1'000'000;

// Pattern, start, first days. A pattern's days are a mask: Sunday is 1, Saturday 64.
constexpr const char* kSeries[] = {
    "daily interval=3 | 2024-02-27 | 2024-02-27 2024-03-01 2024-03-04",
    // The week of the start is its first, and begins on a Sunday.
    "weekly interval=2 days=3 | 2024-03-03 | 2024-03-03 2024-03-04 2024-03-17 2024-03-18",
    "weekly interval=2 days=3 | 2024-03-09 | 2024-03-17 2024-03-18 2024-03-31",
    // A month without the day has it on its last one.
    "monthly day=31 | 2023-12-31 | 2023-12-31 2024-01-31 2024-02-29 2024-03-31 2024-04-30",
    "monthly day=30 | 2023-01-01 | 2023-01-30 2023-02-28 2023-03-30",
    "monthly interval=6 day=29 | 2023-02-10 | 2023-02-28 2023-08-29 2024-02-29",
    "yearly day=29 month=2 | 2096-02-29 | 2096-02-29 2097-02-28 2098-02-28 2099-02-28 2100-02-28",
    "yearly day=29 month=2 | 2100-03-01 | 2101-02-28 2102-02-28 2103-02-28 2104-02-29",
    "yearly day=31 month=4 | 2024-05-01 | 2025-04-30 2026-04-30",
    // The second Tuesday; the last Friday; the first workday; the last day of any kind.
    "month-nth days=4 instance=2 | 2024-01-10 | 2024-02-13 2024-03-12",
    "month-nth days=32 instance=5 | 2024-02-01 | 2024-02-23 2024-03-29 2024-04-26 2024-05-31",
    "month-nth days=62 instance=1 | 2024-06-01 | 2024-06-03 2024-07-01 2024-08-01 2024-09-02",
    "month-nth days=127 instance=5 | 2024-02-01 | 2024-02-29 2024-03-31 2024-04-30",
    // The fourth Thursday of November; the last workday of May.
    "year-nth days=16 instance=4 month=11 | 2024-01-01 | 2024-11-28 2025-11-27",
    "year-nth days=62 instance=5 month=5 | 2024-01-01 | 2024-05-31 2025-05-30 2026-05-29",
};

TEST(SeriesDays, AreTheDefinitions) {
  for (const std::string line : kSeries) {
    SCOPED_TRACE(line);
    const std::size_t first = line.find(" | ");
    const std::size_t second = line.find(" | ", first + 3);
    const Pattern pattern = PatternOf(line.substr(0, first));
    ASSERT_TRUE(IsValid(pattern));
    const local_days start =
        Day(std::stoi(line.substr(first + 3, 4)), std::stoi(line.substr(first + 8, 2)),
            std::stoi(line.substr(first + 11, 2)));
    const std::string days = line.substr(second + 3);
    EXPECT_EQ(Text(ToldDays(pattern, start, (days.size() + 1) / 11)), days);
  }
}

RC_GTEST_PROP(SeriesDays, AgreesWithTheDefinition, ()) {
  const Pattern pattern = *AnyEndlessPattern();
  const local_days start = *AnyDay(1900, 2990);
  const auto told = ToldDays(pattern, start, 60);
  RC_ASSERT(!told.empty() || start > Day(2900, 1, 1));
  const local_days last = told.size() < 60 ? kLastDay : told.back();
  RC_ASSERT(told == CountedDays(pattern, start, last, 60));
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
  const SeriesDays series(pattern, start);
  const std::int64_t before = series.CountBefore(day);
  RC_ASSERT(before == 0 || series[before - 1] < day);
  RC_ASSERT(next == (before < series.size() ? std::optional(series[before]) : std::nullopt));
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
  RC_ASSERT(ToldDays(pattern, start, 40) ==
            CountedDays(pattern, start, expected.empty() ? kLastDay : expected.back(), 40));
  if (!last) return;
  RC_ASSERT(IsDayOf(pattern, start, *last));
  RC_ASSERT(!NextDayOf(pattern, start, *last + days{1}));
}

TEST(SeriesDays, EndAtTheLastDayThatCanBeTold) {
  Pattern pattern{.type = PatternType::kDaily};
  EXPECT_EQ(Text(ToldDays(pattern, Day(2999, 12, 30), kAll)), "2999-12-30 2999-12-31");
  pattern.occurrences = std::numeric_limits<int>::max();
  EXPECT_EQ(SeriesDays(pattern, Day(2990, 1, 1)).size(), 3652);
}

TEST(SeriesDays, GoesThroughAllCenturies) {
  const Pattern pattern{.type = PatternType::kMonthly, .dayOfMonth = 31};
  const auto told = ToldDays(pattern, kFirstDay, kAll);
  EXPECT_EQ(told.size(), 1100u * 12);
  EXPECT_EQ(told, CountedDays(pattern, kFirstDay, kLastDay, kAll));
}

TEST(SeriesDays, HasNothingBeyondTheDaysThatCanBeTold) {
  const Pattern pattern{.type = PatternType::kMonthly, .dayOfMonth = 31};
  EXPECT_TRUE(ToldDays(pattern, kLastDay + days{1}, 1).empty());
  EXPECT_EQ(Text(ToldDays(pattern, kLastDay, kAll)), "2999-12-31");
  EXPECT_FALSE(NextDayOf(pattern, kFirstDay, kLastDay + days{1}));
  EXPECT_FALSE(NextDayOf(pattern, kLastDay + days{1}, kFirstDay));
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
  const Pattern pattern{.type = PatternType::kWeekly, .daysOfWeek = 2};
  EXPECT_EQ(NextDayOf(pattern, Day(2024, 1, 2), Day(1990, 1, 1)), Day(2024, 1, 8));
  EXPECT_FALSE(IsDayOf(pattern, Day(2024, 1, 2), Day(2024, 1, 1)));
}

}  // namespace
}  // namespace calendar
