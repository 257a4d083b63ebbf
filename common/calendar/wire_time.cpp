#include "common/calendar/wire_time.h"

namespace calendar {
namespace {

using std::chrono::days;
using std::chrono::floor;
using std::chrono::local_days;
using std::chrono::local_seconds;
using std::chrono::milliseconds;
using std::chrono::minutes;
using std::chrono::seconds;
using std::chrono::sys_seconds;
using std::chrono::year_month_day;

constexpr milliseconds kWholeDay = days{1};
constexpr milliseconds kCorrection = kWholeDay - milliseconds{1};

struct Moment {
  int day;  // of the year, from 0
  milliseconds time;
};

bool IsLeapYear(int sinceNineteenHundred) {
  return (sinceNineteenHundred & 3) == 0;
}

// The day of the year on which the month begins; 13 is the month behind the year.
int FirstDayOf(int month, bool isLeapYear) {
  const year_month_day first = std::chrono::year{isLeapYear ? 2000 : 2001} / 1 / 1;
  return static_cast<int>(
      (local_days{first + std::chrono::months{month - 1}} - local_days{first}).count());
}

Moment MomentOf(const YearlyChange& change, int year) {
  const bool isLeapYear = IsLeapYear(year);
  int day = FirstDayOf(change.month, isLeapYear);
  // Negative before 1970, as the handheld has it.
  const int weekday = (year * 365 + ((year - 1) >> 2) + day - 25563) % 7;
  day += change.weekday - weekday + (change.week - (weekday <= change.weekday ? 1 : 0)) * 7;
  if (change.week == 5 && day >= FirstDayOf(change.month + 1, isLeapYear)) day -= 7;
  return {day, milliseconds{change.millisecond}};
}

Moment EndOfDaylight(const PresentRules& rules, int year) {
  Moment end = MomentOf(rules.toStandard, year);
  end.time += minutes{rules.daylightBias};
  if (end.time < milliseconds{0}) {
    end.time += kCorrection;
  } else if (end.time >= kWholeDay) {
    end.time -= kCorrection;
  }
  return end;
}

bool IsDaylight(const PresentRules& rules, local_seconds local) {
  if (rules.toDaylight.month == 0 || rules.toStandard.month == 0) return false;
  const local_days today = floor<days>(local);
  const std::chrono::year thisYear = year_month_day{today}.year();
  const int year = static_cast<int>(thisYear) - 1900;
  const auto day = static_cast<int>((today - local_days{thisYear / 1 / 1}).count());
  const Moment start = MomentOf(rules.toDaylight, year);
  const Moment end = EndOfDaylight(rules, year);
  if (day == start.day) return local - today >= start.time;
  if (day == end.day) return local - today < end.time;
  const bool isAfterStart = day > start.day;
  const bool isBeforeEnd = day < end.day;
  return start.day < end.day ? isAfterStart && isBeforeEnd : isAfterStart || isBeforeEnd;
}

}  // namespace

sys_seconds ToWireUtc(const PresentRules& rules, local_seconds local) {
  const int bias = rules.bias + (IsDaylight(rules, local) ? rules.daylightBias : 0);
  return sys_seconds{local.time_since_epoch()} + minutes{bias};
}

local_seconds FromWireUtc(const PresentRules& rules, sys_seconds utc) {
  const local_seconds standard = local_seconds{utc.time_since_epoch()} - minutes{rules.bias};
  return IsDaylight(rules, standard) ? standard - minutes{rules.daylightBias} : standard;
}

}  // namespace calendar
