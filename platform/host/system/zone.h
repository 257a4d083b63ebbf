// Time zones by their names in the system's zone database, as the device describes zones.
//
// The database's directory is TZDIR's when that is set, else the usual one.
#pragma once

#include <filesystem>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "platform/clock.h"

namespace ce::host {

// Of a zone's form only: not absolute, no "..", nothing but letters, digits and "_-+/".
bool ValidZoneName(std::string_view name);

// The rules in force from now on. Nothing when the database lacks the zone or its file is damaged;
// "UTC" is known without a database.
std::optional<TIME_ZONE_INFORMATION> ReadZone(std::string_view name);

// A POSIX rule in the month/week/weekday form. Standard time is the one further west, so a rule
// that calls the winter time "daylight" comes out the other way round. Nothing for a text that is
// no rule.
//
// The form knows hours 0 to 23 of the n-th or last weekday of a month. A change at another hour is
// moved to the neighbouring weekday; as "the day after the fourth Thursday" is not always the
// fourth Friday, the week is the one that lies nearest over all years, which may be a week off in
// some. Midnight at the end of a day becomes the day's last millisecond where that is exact. A
// change on a day of the year becomes the nearest weekday's.
std::optional<TIME_ZONE_INFORMATION> ZoneFromPosixRule(std::string_view rule);

// Whether the zone is on daylight time at this time (UTC, ticks since 1601).
bool IsDaylightAt(const TIME_ZONE_INFORMATION& zone, LONGLONG utc);
// The zone's wall-clock time as ticks.
LONGLONG LocalFromUtc(const TIME_ZONE_INFORMATION& zone, LONGLONG utc);

// Every zone of the database, sorted.
std::vector<std::string> ListZones();

// The host's own zone: what /etc/localtime links to or /etc/timezone says, else "UTC". `etc` is
// where the two are looked for.
std::string HostZoneName(const std::filesystem::path& etc = "/etc");

}  // namespace ce::host
