// A zone as a VTIMEZONE that any calendar program understands.
#pragma once

#include <string>

#include "common/calendar/wall_time.h"
#include "common/calendar/zone.h"

namespace formats {

// The times that the component must be right for.
struct UsedTimes {
  local_seconds first = {};
  local_seconds last = {};
  bool goesOn = false;  // a series without an end begins within
};

// With the changes of the offset from a year before `first` on: those of past years one by one, the
// zone's present rules as rules where `last` or an endless series reaches them.
std::string VTimezoneOf(const calendar::Zone& zone, const UsedTimes& used);

}  // namespace formats
