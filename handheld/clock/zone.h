// Time zones by their names in the system's zone database, as the device describes zones.
#pragma once

#include <optional>
#include <string_view>

#include "common/calendar/zone_file.h"
#include "platform/clock.h"

namespace ce::host {

using calendar::HostZoneName;
using calendar::ListZones;
using calendar::ValidZoneName;

// The rules in force from now on. Nothing when the database lacks the zone or its file is damaged;
// "UTC" is known without a database.
std::optional<TIME_ZONE_INFORMATION> ReadZone(std::string_view name);

// A POSIX rule in the device's form, as PresentRulesOf has it. Nothing for a text that is no rule.
std::optional<TIME_ZONE_INFORMATION> ZoneFromPosixRule(std::string_view rule);

// Whether the zone is on daylight time at this time (UTC, ticks since 1601).
bool IsDaylightAt(const TIME_ZONE_INFORMATION& zone, LONGLONG utc);
// The zone's wall-clock time as ticks.
LONGLONG LocalFromUtc(const TIME_ZONE_INFORMATION& zone, LONGLONG utc);

}  // namespace ce::host
