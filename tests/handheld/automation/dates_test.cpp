#include <gtest/gtest.h>

#include <cmath>
#include <limits>
#include <ostream>

#include "handheld/base/fault.h"
#include "platform/automation.h"
#include "platform/status.h"

namespace ce {

bool operator==(const SYSTEMTIME& a, const SYSTEMTIME& b) {
  return a.wYear == b.wYear && a.wMonth == b.wMonth && a.wDay == b.wDay && a.wHour == b.wHour &&
         a.wMinute == b.wMinute && a.wSecond == b.wSecond && a.wMilliseconds == b.wMilliseconds &&
         a.wDayOfWeek == b.wDayOfWeek;
}

std::ostream& operator<<(std::ostream& out, const SYSTEMTIME& t) {
  return out << t.wYear << '-' << t.wMonth << '-' << t.wDay << ' ' << t.wHour << ':' << t.wMinute
             << ':' << t.wSecond << '.' << t.wMilliseconds << " weekday " << t.wDayOfWeek;
}

namespace {

constexpr double kSecond = 1.0 / 86400;

struct DateCase {
  const char* name;
  DATE date;
  SYSTEMTIME time;  // year, month, day of week, day, hour, minute, second, milliseconds
};

// Both directions.
constexpr DateCase kDates[] = {
    {"DayZero", 0.0, {1899, 12, 6, 30, 0, 0, 0, 0}},
    {"DayZeroAtNoon", 0.5, {1899, 12, 6, 30, 12, 0, 0, 0}},
    {"NegativeDatesCountTheTimeAwayFromZero", -1.25, {1899, 12, 5, 29, 6, 0, 0, 0}},
    {"NoDate", kNoDate, {4501, 1, 6, 1, 0, 0, 0, 0}},
    {"LeapDay", 39507.0 + 30 * kSecond, {2008, 2, 5, 29, 0, 0, 30, 0}},
    {"FirstDay", -657434.0, {100, 1, 5, 1, 0, 0, 0, 0}},
    {"EveningOfTheFirstDay", -657434.75, {100, 1, 5, 1, 18, 0, 0, 0}},
    {"LastSecond", 2958465.0 + 86399 * kSecond, {9999, 12, 5, 31, 23, 59, 59, 0}},
    {"FebruaryOf1900Has28Days", 61.0, {1900, 3, 4, 1, 0, 0, 0, 0}},
};

class Dates : public ::testing::TestWithParam<DateCase> {};
INSTANTIATE_TEST_SUITE_P(All, Dates, ::testing::ValuesIn(kDates),
                         [](const auto& test) { return test.param.name; });

TEST_P(Dates, VariantTimeToSystemTime) {
  SYSTEMTIME time{};
  EXPECT_NE(VariantTimeToSystemTime(GetParam().date, &time), 0);
  EXPECT_EQ(time, GetParam().time);
}

TEST_P(Dates, SystemTimeToVariantTime) {
  DATE date = 0;
  EXPECT_NE(SystemTimeToVariantTime(&GetParam().time, &date), 0);
  EXPECT_DOUBLE_EQ(date, GetParam().date);
}

SYSTEMTIME TimeOf(DATE date) {
  SYSTEMTIME time{};
  EXPECT_NE(VariantTimeToSystemTime(date, &time), 0) << date;
  return time;
}

TEST(VariantTimeToSystemTime, RoundsToTheNearestSecond) {
  EXPECT_EQ(TimeOf(1 + 0.4 * kSecond), (SYSTEMTIME{1899, 12, 0, 31, 0, 0, 0, 0}));
  EXPECT_EQ(TimeOf(1 + 0.6 * kSecond), (SYSTEMTIME{1899, 12, 0, 31, 0, 0, 1, 0}));
  EXPECT_EQ(TimeOf(-1 - 0.6 * kSecond), (SYSTEMTIME{1899, 12, 5, 29, 0, 0, 1, 0}));
}

TEST(VariantTimeToSystemTime, RoundingCarriesIntoTheDay) {
  EXPECT_EQ(TimeOf(2 - 0.4 * kSecond), (SYSTEMTIME{1900, 1, 1, 1, 0, 0, 0, 0}));
  // The 28th, almost 24:00, is the 29th.
  EXPECT_EQ(TimeOf(-3 + 0.4 * kSecond), (SYSTEMTIME{1899, 12, 5, 29, 0, 0, 0, 0}));
}

TEST(VariantTimeToSystemTime, EverySecondOfADayIsExact) {
  for (int second = 0; second < 86400; ++second) {
    const SYSTEMTIME time = TimeOf(39493 + second * kSecond);
    ASSERT_EQ((time.wHour * 60 + time.wMinute) * 60 + time.wSecond, second);
    ASSERT_EQ(time.wDay, 15);
  }
}

TEST(VariantTimeToSystemTime, RefusesWhatIsOutsideTheYears100To9999) {
  for (const DATE date :
       {-657435.0, 2958466.0, 2958465.9999999, 1e300, -1e300,
        std::numeric_limits<double>::infinity(), std::numeric_limits<double>::quiet_NaN()}) {
    SYSTEMTIME time{};
    SetLastError(ERROR_SUCCESS);
    EXPECT_EQ(VariantTimeToSystemTime(date, &time), 0) << date;
    EXPECT_EQ(GetLastError(), ERROR_INVALID_PARAMETER) << date;
    EXPECT_EQ(time, SYSTEMTIME{}) << date;
  }
}

TEST(SystemTimeToVariantTime, IgnoresMillisecondsAndDayOfWeek) {
  const SYSTEMTIME time{2008, 2, 99, 15, 0, 0, 0, 999};
  DATE date = 0;
  EXPECT_NE(SystemTimeToVariantTime(&time, &date), 0);
  EXPECT_EQ(date, 39493.0);
}

TEST(SystemTimeToVariantTime, TakesTwoDigitYearsAsRecent) {
  struct Case {
    WORD written;
    WORD meant;
  };
  for (const Case c :
       {Case{0, 2000}, Case{29, 2029}, Case{30, 1930}, Case{99, 1999}, Case{100, 100}}) {
    DATE shortened = 0;
    DATE full = 1;
    const SYSTEMTIME written{c.written, 2, 0, 28, 0, 0, 0, 0};
    const SYSTEMTIME meant{c.meant, 2, 0, 28, 0, 0, 0, 0};
    EXPECT_NE(SystemTimeToVariantTime(&written, &shortened), 0) << c.written;
    EXPECT_NE(SystemTimeToVariantTime(&meant, &full), 0) << c.meant;
    EXPECT_EQ(shortened, full) << c.written;
  }
}

TEST(SystemTimeToVariantTime, RefusesImpossibleDatesAndTimes) {
  const SYSTEMTIME impossible[] = {
      {2008, 0, 0, 2, 0, 0, 0, 0},        {2008, 13, 0, 1, 0, 0, 0, 0},
      {2008, 1, 0, 0, 0, 0, 0, 0},        {2008, 1, 0, 32, 0, 0, 0, 0},
      {2007, 2, 0, 29, 0, 0, 0, 0},       {1900, 2, 0, 29, 0, 0, 0, 0},
      {2008, 4, 0, 31, 0, 0, 0, 0},       {2008, 1, 0, 1, 24, 0, 0, 0},
      {2008, 1, 0, 1, 0, 60, 0, 0},       {2008, 1, 0, 1, 0, 0, 60, 0},
      {10000, 1, 0, 1, 0, 0, 0, 0},       {65535, 1, 0, 1, 0, 0, 0, 0},
      {2008, 257, 0, 1, 0, 0, 0, 0},      {2008, 1, 0, 257, 0, 0, 0, 0},
      {2008, 65535, 0, 65535, 0, 0, 0, 0}};
  for (const SYSTEMTIME& time : impossible) {
    DATE date = 42;
    SetLastError(ERROR_SUCCESS);
    EXPECT_EQ(SystemTimeToVariantTime(&time, &date), 0) << time;
    EXPECT_EQ(GetLastError(), ERROR_INVALID_PARAMETER) << time;
    EXPECT_EQ(date, 42) << time;
  }
}

TEST(SystemTimeToVariantTime, EveryDayComesBack) {
  for (double day = -657434; day <= 2958465; day += 97) {
    const SYSTEMTIME time = TimeOf(day);
    DATE back = 0;
    ASSERT_NE(SystemTimeToVariantTime(&time, &back), 0) << time;
    ASSERT_EQ(back, day) << time;
  }
}

TEST(VariantTimes, FaultsSetTheLastError) {
  SYSTEMTIME time{2008, 1, 0, 1, 0, 0, 0, 0};
  DATE date = 0;
  {
    const auto plan = host::FaultPlan::FailCalls("VariantTimeToSystemTime", 1234);
    EXPECT_EQ(VariantTimeToSystemTime(0, &time), 0);
    EXPECT_EQ(GetLastError(), 1234u);
  }
  {
    const auto plan = host::FaultPlan::FailCalls("SystemTimeToVariantTime", 4321);
    EXPECT_EQ(SystemTimeToVariantTime(&time, &date), 0);
    EXPECT_EQ(GetLastError(), 4321u);
  }
}

}  // namespace
}  // namespace ce
