// A zone's present rules in the form that a handheld knows: a change falls on a weekday of a month,
// at an hour of that day.
#pragma once

#include <string>

#include "common/calendar/posix_zone.h"

namespace calendar {

// By the clock before the change.
struct YearlyChange {
  int month = 0;  // 1 to 12; 0 for none
  int week = 0;   // 1 to 5; 5 is the last
  int weekday = 0;
  int millisecond = 0;  // of the day
};

struct PresentRules {
  int bias = 0;          // minutes; UTC = standard time + bias
  int daylightBias = 0;  // minutes that daylight time adds to it
  std::string standardName;
  std::string daylightName;
  // Both or neither.
  YearlyChange toStandard;
  YearlyChange toDaylight;
};

// Standard time is the one further west, so a rule that calls the winter time "daylight" comes out
// the other way round.
//
// The form knows hours 0 to 23 of the n-th or last weekday of a month. A change at another hour is
// moved to the neighbouring weekday; as "the day after the fourth Thursday" is not always the
// fourth Friday, the week is the one that lies nearest over all years, which may be a week off in
// some. Midnight at the end of a day becomes the day's last millisecond where that is exact. A
// change on a day of the year becomes the nearest weekday's.
PresentRules PresentRulesOf(const PosixZone& posix);

}  // namespace calendar
