// The time zone that a VTIMEZONE describes.
#pragma once

#include <optional>

#include "common/calendar/clock.h"
#include "common/formats/icalendar/icalendar_component.h"
#include "common/formats/icalendar/icalendar_rule.h"

namespace formats {

// Before the first change that the component knows, the zone is taken to change as in its first
// year. Rules are followed up to the year 2200. Nothing for a component that does not say an
// offset.
std::optional<calendar::Clock> ClockOf(const Component& vtimezone, WorkBudget& budget);

}  // namespace formats
