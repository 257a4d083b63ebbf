// Conversions between local time and UTC by the handheld's zone record, with a daylight-saving test
// of its own.
//
// The zone record is read on first use and kept until ResetTimeZoneCache. Every operation may be
// called from any thread. No failure is reported: a time that the platform cannot convert gives a
// SYSTEMTIME of zeros, which is no date.
#pragma once

#include "agent/time/zone_rules.h"
#include "platform/clock.h"
#include "platform/types.h"

// 0 switches daylight detection off: every time is standard time. Exported from the program.
[[gnu::visibility("default")]] extern int g_bUseDST;

namespace corvane {

// UTC minus local standard time in seconds, and what daylight time adds to that. Either
// pointer may be null. Writes nothing when the zone cannot be read: callers start at 0.
void GetZoneBiases(ce::LONG* biasSeconds, ce::LONG* daylightBiasSeconds);
void ResetTimeZoneCache();

// 0 or 1. The time is taken in local terms, without its milliseconds.
int IsDaylightTime(const BrokenDownTime& time);

ce::SYSTEMTIME LocalTimeToUtc(const ce::SYSTEMTIME& local);
ce::SYSTEMTIME UtcToLocalTime(const ce::SYSTEMTIME& utc);

// end - start, in whole seconds, rounded towards zero.
ce::LONGLONG FileTimeDiffSeconds(const ce::FILETIME& start, const ce::FILETIME& end);

BrokenDownTime SystemTimeToBrokenDown(const ce::SYSTEMTIME& time);
// 0 is 1 January.
int DayOfYear(const ce::SYSTEMTIME& time);

}  // namespace corvane
