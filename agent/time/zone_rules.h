// What a zone record says: its biases, its transitions in a year, and which side of them a time is.
// No state; zone.h applies this to the handheld's zone.
#pragma once

#include "platform/clock.h"
#include "platform/types.h"

namespace corvane {

struct BrokenDownTime {
  int year;       // since 1900
  int month;      // 0 to 11
  int day;        // of the month
  int dayOfWeek;  // 0 is Sunday
  int dayOfYear;  // 0 is 1 January
  int hour;
  int minute;
  int second;
  int isDaylight;  // always 0
};

struct TransitionPoint {
  int year;  // since 1900
  int dayOfYear;
  int millisecond;  // of the day
};

enum TransitionKind { kEndOfDaylight = 0, kStartOfDaylight = 1 };

// UTC minus local standard time, in seconds.
ce::LONG BiasSeconds(const ce::TIME_ZONE_INFORMATION& zone);
// What daylight time adds to that; 0 for a zone without it.
ce::LONG DaylightBiasSeconds(const ce::TIME_ZONE_INFORMATION& zone);

// The transition that `rule` (month, week, weekday and time of day) names in a year since 1900.
// Every fourth year counts as a leap year. The end of daylight is given in daylight time and
// answered in standard time, on the same day of the year even when that leaves the day.
TransitionPoint ComputeTransition(TransitionKind kind, int year, const ce::SYSTEMTIME& rule,
                                  ce::LONG daylightBiasSeconds);

// Whether a local standard time is daylight time. False for a zone whose rules are absolute dates
// or name no month. `daylightBiasSeconds` is used for the end of daylight.
bool IsDaylightByRules(const ce::TIME_ZONE_INFORMATION& zone, ce::LONG daylightBiasSeconds,
                       const BrokenDownTime& time);

}  // namespace corvane
