// The conversions that a handheld makes for what travels as UTC, with its zone's present rules and
// the oddities of its arithmetic: every fourth year is a leap year to it, and an end of daylight
// that leaves its day by the change of clocks is moved by a millisecond less than a day and still
// counts for the day that it left.
#pragma once

#include <chrono>

#include "common/calendar/present_rules.h"

namespace calendar {

std::chrono::sys_seconds ToWireUtc(const PresentRules& rules, std::chrono::local_seconds local);
std::chrono::local_seconds FromWireUtc(const PresentRules& rules, std::chrono::sys_seconds utc);

}  // namespace calendar
