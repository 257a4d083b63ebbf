#include <cmath>
#include <limits>

#include "tests/wine/answers/answers.h"

namespace answers {
namespace {

constexpr int kFirstDay = -657434;  // 0100-01-01
constexpr int kLastDay = 2958465;   // 9999-12-31

void AskDate(DATE date) {
  SYSTEMTIME time{};
  const bool done = VariantTimeToSystemTime(date, &time) != 0;
  Say("DATE to SYSTEMTIME: " + Number(date), done ? Time(time) : "failed");
}

// The day `whole` and this part of it, whichever side of zero it lies.
DATE Moment(std::int64_t whole, double part) {
  const auto day = static_cast<double>(whole);
  return whole < 0 ? day - part : day + part;
}

void AskEveryDate() {
  constexpr double kSecond = 1.0 / 86400;
  for (const DATE date :
       {0.0, -0.0, std::numeric_limits<double>::quiet_NaN(),
        std::numeric_limits<double>::infinity(), -std::numeric_limits<double>::infinity(), 1e300,
        -1e300, 1e-300, 5e9, -5e9, 4294967296.0, 949998.0}) {
    AskDate(date);
  }
  // Ends of the range, day zero, leap days and days that look like some.
  for (const int day : {kFirstDay - 1,
                        kFirstDay,
                        kFirstDay + 1,
                        -1000,
                        -2,
                        -1,
                        0,
                        1,
                        2,
                        59,
                        60,
                        61,
                        36526,
                        36584,
                        36585,
                        36586,
                        39492,
                        73109,
                        73110,
                        182681,
                        182682,
                        949998,
                        kLastDay - 1,
                        kLastDay,
                        kLastDay + 1}) {
    for (const double part : {0.0, 1e-12, 0.25, 0.5, 0.75, kSecond, 0.4 * kSecond, 0.6 * kSecond,
                              1.4 * kSecond, 1.6 * kSecond, 0.5 - 0.4 * kSecond, 1 - kSecond,
                              1 - 0.6 * kSecond, 1 - 0.4 * kSecond, 1 - 1e-9, 1 - 1e-12}) {
      AskDate(Moment(day, part));
    }
  }
  Chance chance(1899);
  for (int i = 0; i < 3000; ++i) {
    const auto second = static_cast<double>(chance.Between(0, 86399));
    AskDate(Moment(chance.Between(kFirstDay, kLastDay), second / 86400));
  }
  // Anywhere between two seconds, a hundredth of one from the middle.
  for (int i = 0; i < 3000; ++i) {
    const auto second = static_cast<double>(chance.Between(0, 86399));
    std::int64_t hundredth = chance.Between(0, 97);
    if (hundredth >= 49) hundredth += 2;
    AskDate(Moment(chance.Between(kFirstDay, kLastDay),
                   (second + static_cast<double>(hundredth) / 100) / 86400));
  }
}

void AskToDate(SYSTEMTIME time) {
  DATE date = 0;
  const bool done = SystemTimeToVariantTime(&time, &date) != 0;
  Say("SYSTEMTIME to DATE: " + Time(time), done ? Number(date) : "failed");
}

void AskToTicks(const SYSTEMTIME& time) {
  FILETIME ticks{};
  SetLastError(0);
  const bool done = SystemTimeToFileTime(&time, &ticks) != 0;
  Say("SYSTEMTIME to FILETIME: " + Time(time),
      done ? Number(static_cast<std::int64_t>(std::uint64_t{ticks.dwHighDateTime} << 32 |
                                              ticks.dwLowDateTime))
           : "failed, " + Number(std::int64_t{GetLastError()}));
}

void AskTicks(std::uint64_t ticks) {
  const FILETIME given{static_cast<DWORD>(ticks), static_cast<DWORD>(ticks >> 32)};
  SYSTEMTIME time{};
  SetLastError(0);
  const bool done = FileTimeToSystemTime(&given, &time) != 0;
  Say("FILETIME to SYSTEMTIME: " + Number(static_cast<std::int64_t>(ticks)),
      done ? Time(time) : "failed, " + Number(std::int64_t{GetLastError()}));
}

void AskTime(const SYSTEMTIME& time) {
  AskToDate(time);
  AskToTicks(time);
}

void AskEveryTime() {
  for (const int year : {0,    1,    29,   30,    49,    50,    99,    100,   1582, 1599,
                         1600, 1601, 1752, 1899,  1900,  1970,  2000,  2007,  2008, 2100,
                         2999, 4501, 9999, 10000, 30827, 30828, 32767, 32768, 65535}) {
    for (const auto& [month, day] : {std::pair{1, 1},
                                     {2, 28},
                                     {2, 29},
                                     {2, 30},
                                     {4, 30},
                                     {4, 31},
                                     {12, 29},
                                     {12, 30},
                                     {12, 31},
                                     {12, 32},
                                     {0, 1},
                                     {13, 1},
                                     {1, 0},
                                     {65535, 1},
                                     {1, 65535}}) {
      AskTime(MakeTime({year, month, day}));
    }
  }
  for (const int year : {1601, 1899, 1900, 2008}) {
    for (const auto& [hour, minute, second, millisecond] : {std::array{23, 59, 59, 999},
                                                            {24, 0, 0, 0},
                                                            {0, 60, 0, 0},
                                                            {0, 0, 60, 0},
                                                            {0, 0, 0, 1000},
                                                            {0, 0, 0, 500},
                                                            {65535, 0, 0, 0},
                                                            {0, 65535, 0, 0},
                                                            {0, 0, 65535, 0},
                                                            {0, 0, 0, 65535},
                                                            {12, 0, 0, 0},
                                                            {23, 59, 59, 0},
                                                            {0, 0, 1, 0}}) {
      AskTime(MakeTime({year, 12, 29, hour, minute, second, millisecond}));
      AskTime(MakeTime({year, 12, 31, hour, minute, second, millisecond}));
    }
  }
  Chance chance(1601);
  for (int i = 0; i < 2000; ++i) {
    AskTime(MakeTime({chance.Between(100, 9999), chance.Between(1, 12), chance.Between(1, 28),
                      chance.Between(0, 23), chance.Between(0, 59), chance.Between(0, 59),
                      chance.Between(0, 999)}));
  }
  for (int i = 0; i < 1000; ++i) {
    AskTime(MakeTime({chance.Between(1890, 2110), chance.Between(0, 13), chance.Between(0, 32),
                      chance.Between(0, 25), chance.Between(0, 61), chance.Between(0, 61),
                      chance.Between(0, 1100)}));
  }
}

void AskEveryTick() {
  constexpr std::uint64_t kDay = 864'000'000'000;
  constexpr std::uint64_t kTop = std::uint64_t{1} << 63;
  for (const std::uint64_t ticks :
       {std::uint64_t{0}, std::uint64_t{1}, std::uint64_t{9'999}, std::uint64_t{10'000},
        std::uint64_t{9'999'999}, kDay - 1, kDay, 109'205 * kDay - 1, 109'205 * kDay,
        std::uint64_t{0xFFFFFFFF}, std::uint64_t{0x100000000}, kTop - 1, kTop, ~std::uint64_t{0}}) {
    AskTicks(ticks);
  }
  Chance chance(30827);
  const auto anyTick = [&](std::int64_t lastDay) {
    const auto day = static_cast<std::uint64_t>(chance.Between(0, lastDay));
    return day * kDay + static_cast<std::uint64_t>(chance.Between(0, kDay - 1));
  };
  // To the year 30827, and within a few hundred years.
  for (int i = 0; i < 1000; ++i) {
    AskTicks(anyTick(10'674'576));
  }
  for (int i = 0; i < 2000; ++i) {
    AskTicks(anyTick(200'000));
  }
}

}  // namespace

void AskDates() {
  AskEveryDate();
  AskEveryTime();
  AskEveryTick();
}

}  // namespace answers
