// The POSIX form of a time zone's present rules: "CET-1CEST,M3.5.0,M10.5.0/3".
#pragma once

#include <chrono>
#include <optional>
#include <string>
#include <string_view>

namespace calendar {

// A day of each year, and the wall-clock time before the change.
struct PosixDate {
  enum class Kind {
    kMonthWeekDay,  // the week-th weekday of the month, week 5 the last
    kDayNoLeap,     // day 1 to 365; 29 February is never counted
    kDayFromZero,   // day 0 to 365; 29 February is counted
  };
  Kind kind = Kind::kMonthWeekDay;
  int month = 0;    // 1 to 12
  int week = 0;     // 1 to 5
  int weekday = 0;  // 0 is Sunday
  int day = 0;
  int seconds = 7200;  // from midnight; from a week before it to a week after it
};

struct PosixZone {
  std::string standardName;
  int standardWest = 0;  // seconds that the standard time lies behind UTC
  std::string daylightName;
  int daylightWest = 0;
  // Both or neither. Without them the zone stays on standard time.
  std::optional<PosixDate> daylightStart;
  std::optional<PosixDate> daylightEnd;
};

// The week-th such weekday (0 is Sunday) of a month; week 5 is the last.
std::chrono::local_days WeekdayOfMonth(int year, int month, int week, int weekday);

// Where in a year the date falls, its time apart.
std::chrono::local_days DayInYear(const PosixDate& date, int year);

// Nothing for a text that is no rule.
std::optional<PosixZone> ParsePosixZone(std::string_view rule);

}  // namespace calendar
