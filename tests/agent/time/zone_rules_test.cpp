// The rules of a zone record, without a handheld: transitions of a year and the daylight test.
#include "agent/time/zone_rules.h"

#include <gtest/gtest.h>

#include <chrono>

namespace corvane {
namespace {

using std::chrono::sys_days;
using std::chrono::weekday;
using std::chrono::year;

struct Rule {
  int month;
  int week;
  int dayOfWeek;
  int hour = 0;
  int minute = 0;
  int second = 0;
  int millisecond = 0;
};

ce::SYSTEMTIME Record(const Rule& rule) {
  const auto field = [](int value) { return static_cast<ce::WORD>(value); };
  return {0,
          field(rule.month),
          field(rule.dayOfWeek),
          field(rule.week),
          field(rule.hour),
          field(rule.minute),
          field(rule.second),
          field(rule.millisecond)};
}

ce::TIME_ZONE_INFORMATION Zone(const Rule& start, const Rule& end) {
  ce::TIME_ZONE_INFORMATION zone{};
  zone.Bias = -60;
  zone.DaylightBias = -60;
  zone.DaylightDate = Record(start);
  zone.StandardDate = Record(end);
  return zone;
}

const Rule kBerlinStart = {3, 5, 0, 2};
const Rule kBerlinEnd = {10, 5, 0, 3};
const Rule kSydneyStart = {10, 1, 0, 2};
const Rule kSydneyEnd = {4, 1, 0, 3};

int DayIn(int inYear, const Rule& rule) {
  return ComputeTransition(kStartOfDaylight, inYear - 1900, Record(rule), 0).dayOfYear;
}

int EndMillisecond(const Rule& rule, ce::LONG daylightBias) {
  return ComputeTransition(kEndOfDaylight, 108, Record(rule), daylightBias).millisecond;
}

BrokenDownTime Moment(int inYear, int month, int day, int hour, int minute = 0, int second = 0) {
  const sys_days date{year{inYear} / month / day};
  const sys_days newYear{year{inYear} / 1 / 1};
  return {inYear - 1900,
          month - 1,
          day,
          static_cast<int>(weekday{date}.c_encoding()),
          static_cast<int>((date - newYear).count()),
          hour,
          minute,
          second,
          0};
}

bool Daylight(const ce::TIME_ZONE_INFORMATION& zone, const BrokenDownTime& time) {
  return IsDaylightByRules(zone, DaylightBiasSeconds(zone), time);
}

TEST(BiasSeconds, AddsTheStandardBiasOnlyWhenThereIsAStandardRule) {
  ce::TIME_ZONE_INFORMATION zone{};
  zone.Bias = -120;
  zone.StandardBias = 30;
  EXPECT_EQ(BiasSeconds(zone), -120 * 60);
  zone.StandardDate.wMonth = 10;
  EXPECT_EQ(BiasSeconds(zone), -90 * 60);
}

TEST(DaylightBiasSeconds, IsTheDifferenceOfTheTwoBiases) {
  ce::TIME_ZONE_INFORMATION zone = Zone(kBerlinStart, kBerlinEnd);
  zone.StandardBias = 15;
  EXPECT_EQ(DaylightBiasSeconds(zone), -75 * 60);
}

TEST(DaylightBiasSeconds, IsNothingWithoutADaylightRule) {
  ce::TIME_ZONE_INFORMATION zone = Zone(kBerlinStart, kBerlinEnd);
  zone.DaylightDate.wMonth = 0;
  EXPECT_EQ(DaylightBiasSeconds(zone), 0);
}

TEST(DaylightBiasSeconds, IsNothingWhenTheDaylightBiasIsNothing) {
  ce::TIME_ZONE_INFORMATION zone = Zone(kBerlinStart, kBerlinEnd);
  zone.DaylightBias = 0;
  zone.StandardBias = 30;
  EXPECT_EQ(DaylightBiasSeconds(zone), 0);
}

TEST(ComputeTransition, FindsEveryWeekdayOfEveryMonth) {
  for (int inYear = 1970; inYear < 2100; ++inYear) {
    const sys_days newYear{year{inYear} / 1 / 1};
    for (unsigned month = 1; month <= 12; ++month) {
      for (unsigned day = 0; day < 7; ++day) {
        const auto monthOfYear = year{inYear} / static_cast<int>(month);
        for (unsigned week = 1; week <= 4; ++week) {
          const sys_days expected{monthOfYear / weekday{day}[week]};
          ASSERT_EQ(DayIn(inYear, {int(month), int(week), int(day)}), (expected - newYear).count())
              << inYear << '-' << month << " week " << week << " weekday " << day;
        }
        const sys_days last{monthOfYear / weekday{day}[std::chrono::last]};
        ASSERT_EQ(DayIn(inYear, {int(month), 5, int(day)}), (last - newYear).count())
            << inYear << '-' << month << " last weekday " << day;
      }
    }
  }
}

TEST(ComputeTransition, TakesTheFourthForWeekFiveWhenThereIsNoFifth) {
  EXPECT_EQ(DayIn(2009, {2, 5, 0}), 31 + 21);  // 22 February
  EXPECT_EQ(DayIn(2008, {2, 5, 5}), 31 + 28);  // 29 February, a fifth Friday
}

// The year 2100 is taken for a leap year: its March begins on the 2nd, a Tuesday, and each later
// year begins a weekday too late.
TEST(ComputeTransition, CountsEveryFourthYearAsALeapYear) {
  EXPECT_EQ(DayIn(2100, {3, 1, 2}), 60);  // Tuesday 2 March
  EXPECT_EQ(DayIn(2100, {3, 1, 1}), 66);  // Monday 8 March, though the 1st is one
  EXPECT_EQ(DayIn(2101, {4, 1, 0}), 91);  // Saturday 2 April, taken for a Sunday
}

TEST(ComputeTransition, KeepsTheRemaindersSignBefore1970) {
  // 1 January 1969 was a Wednesday; the remainder is -4, which is below every weekday.
  EXPECT_EQ(DayIn(1969, {1, 1, 0}), 4);   // Sunday the 5th
  EXPECT_EQ(DayIn(1969, {1, 1, 5}), 9);   // Friday the 10th, a week late
  EXPECT_EQ(DayIn(1969, {1, 5, 5}), 30);  // Friday the 31st, moved back into the month
}

TEST(ComputeTransition, GivesTheStartInItsOwnTime) {
  const TransitionPoint point =
      ComputeTransition(kStartOfDaylight, 108, Record({3, 5, 0, 2, 3, 4, 5}), -3600);
  EXPECT_EQ(point.year, 108);
  EXPECT_EQ(point.dayOfYear, 31 + 29 + 29);  // 30 March 2008
  EXPECT_EQ(point.millisecond, ((2 * 60 + 3) * 60 + 4) * 1000 + 5);
}

TEST(ComputeTransition, MovesTheEndIntoStandardTime) {
  EXPECT_EQ(EndMillisecond({10, 5, 0, 3, 0, 0, 7}, -3600), 2 * 3'600'000 + 7);
  EXPECT_EQ(EndMillisecond({10, 5, 0, 1}, -3600), 0);
}

TEST(ComputeTransition, MovesAnEndBeforeTheDayByOneMillisecondLessThanADay) {
  const TransitionPoint point =
      ComputeTransition(kEndOfDaylight, 108, Record({10, 5, 0, 0}), -3600);
  EXPECT_EQ(point.millisecond, 23 * 3'600'000 - 1);
  EXPECT_EQ(point.dayOfYear, 31 + 29 + 31 + 30 + 31 + 30 + 31 + 31 + 30 + 25);  // still 26 October
}

TEST(ComputeTransition, MovesAnEndAfterTheDayByOneMillisecondLessThanADay) {
  EXPECT_EQ(EndMillisecond({10, 5, 0, 23, 30}, 3600), 30 * 60'000 + 1);
  EXPECT_EQ(EndMillisecond({10, 5, 0, 23}, 3600), 1);
  EXPECT_EQ(EndMillisecond({10, 5, 0, 22, 59, 59, 999}, 3600), 86'399'999);
}

TEST(ComputeTransition, StaysWithinItsTablesForAMonthThatDoesNotExist) {
  EXPECT_EQ(DayIn(2008, {0, 1, 0}), DayIn(2008, {1, 1, 0}));
  EXPECT_EQ(DayIn(2008, {13, 1, 0}), DayIn(2008, {12, 1, 0}));
  EXPECT_EQ(DayIn(2008, {65535, 5, 0}), DayIn(2008, {12, 5, 0}));
}

TEST(IsDaylightByRules, BeginsAndEndsWithTheSecondInTheNorth) {
  const ce::TIME_ZONE_INFORMATION zone = Zone(kBerlinStart, kBerlinEnd);
  EXPECT_FALSE(Daylight(zone, Moment(2008, 1, 1, 12)));
  EXPECT_FALSE(Daylight(zone, Moment(2008, 3, 29, 23, 59, 59)));
  EXPECT_FALSE(Daylight(zone, Moment(2008, 3, 30, 1, 59, 59)));
  EXPECT_TRUE(Daylight(zone, Moment(2008, 3, 30, 2)));
  EXPECT_TRUE(Daylight(zone, Moment(2008, 7, 1, 0)));
  EXPECT_TRUE(Daylight(zone, Moment(2008, 10, 26, 1, 59, 59)));
  EXPECT_FALSE(Daylight(zone, Moment(2008, 10, 26, 2)));
  EXPECT_FALSE(Daylight(zone, Moment(2008, 10, 27, 0)));
  EXPECT_FALSE(Daylight(zone, Moment(2008, 12, 31, 23)));
}

TEST(IsDaylightByRules, RunsOverTheNewYearInTheSouth) {
  const ce::TIME_ZONE_INFORMATION zone = Zone(kSydneyStart, kSydneyEnd);
  EXPECT_TRUE(Daylight(zone, Moment(2009, 1, 1, 0)));
  EXPECT_TRUE(Daylight(zone, Moment(2009, 4, 5, 1, 59, 59)));
  EXPECT_FALSE(Daylight(zone, Moment(2009, 4, 5, 2)));
  EXPECT_FALSE(Daylight(zone, Moment(2009, 7, 1, 12)));
  EXPECT_FALSE(Daylight(zone, Moment(2009, 10, 4, 1, 59, 59)));
  EXPECT_TRUE(Daylight(zone, Moment(2009, 10, 4, 2)));
  EXPECT_TRUE(Daylight(zone, Moment(2009, 12, 31, 23)));
}

TEST(IsDaylightByRules, TakesBothTransitionsOnOneDayForSouthern) {
  const ce::TIME_ZONE_INFORMATION zone = Zone({6, 1, 0, 2}, {6, 1, 0, 5});
  EXPECT_TRUE(Daylight(zone, Moment(2008, 5, 31, 12)));
  EXPECT_FALSE(Daylight(zone, Moment(2008, 6, 1, 1)));
  EXPECT_TRUE(Daylight(zone, Moment(2008, 6, 1, 2)));
  EXPECT_TRUE(Daylight(zone, Moment(2008, 6, 1, 23)));  // the start decides on that day
  EXPECT_TRUE(Daylight(zone, Moment(2008, 6, 2, 0)));
}

TEST(IsDaylightByRules, KeepsAnEndThatLeavesTheDayOnItsDay) {
  const ce::TIME_ZONE_INFORMATION zone = Zone({3, 5, 0, 0}, {10, 5, 0, 0});
  EXPECT_TRUE(Daylight(zone, Moment(2008, 10, 25, 23, 30)));
  EXPECT_TRUE(Daylight(zone, Moment(2008, 10, 26, 22, 59, 59)));
  EXPECT_FALSE(Daylight(zone, Moment(2008, 10, 26, 23)));
}

TEST(IsDaylightByRules, KnowsNoDaylightWithAbsoluteDates) {
  ce::TIME_ZONE_INFORMATION zone = Zone(kBerlinStart, kBerlinEnd);
  zone.DaylightDate.wYear = 2008;
  EXPECT_FALSE(Daylight(zone, Moment(2008, 7, 1, 0)));
  zone.DaylightDate.wYear = 0;
  zone.StandardDate.wYear = 2008;
  EXPECT_FALSE(Daylight(zone, Moment(2008, 7, 1, 0)));
}

TEST(IsDaylightByRules, KnowsNoDaylightWithoutAMonth) {
  for (const int month : {0, 13, 65535}) {
    EXPECT_FALSE(Daylight(Zone({month, 1, 0, 2}, kBerlinEnd), Moment(2008, 7, 1, 0))) << month;
    EXPECT_FALSE(Daylight(Zone(kBerlinStart, {month, 1, 0, 2}), Moment(2008, 7, 1, 0))) << month;
  }
}

}  // namespace
}  // namespace corvane
