// The handheld's own clock and time zone, and conversions between time forms.
#pragma once

#include "platform/types.h"

namespace ce {

struct TIME_ZONE_INFORMATION {
  LONG Bias;  // minutes; UTC = local time + bias
  WCHAR StandardName[32];
  SYSTEMTIME StandardDate;  // wMonth 0: no rule; wDay is the week 1 to 5, 5 is the last
  LONG StandardBias;
  WCHAR DaylightName[32];
  SYSTEMTIME DaylightDate;
  LONG DaylightBias;
};
static_assert(sizeof(TIME_ZONE_INFORMATION) == 172);

inline constexpr DWORD TIME_ZONE_ID_UNKNOWN = 0;
inline constexpr DWORD TIME_ZONE_ID_STANDARD = 1;
inline constexpr DWORD TIME_ZONE_ID_DAYLIGHT = 2;
inline constexpr DWORD TIME_ZONE_ID_INVALID = 0xFFFFFFFF;

// UTC, from the handheld's clock.
void GetSystemTime(SYSTEMTIME* time);
// Sets the handheld's clock, never the host's. Day of week is ignored. An impossible time fails
// with ERROR_INVALID_PARAMETER.
BOOL SetSystemTime(const SYSTEMTIME* time);
// The handheld's clock in the handheld's zone, daylight saving included.
void GetLocalTime(SYSTEMTIME* time);
// The zone's standard and daylight rules as the month/week/weekday form; TIME_ZONE_ID_INVALID when
// they cannot be read.
DWORD GetTimeZoneInformation(TIME_ZONE_INFORMATION* zone);

// Both fail with ERROR_INVALID_PARAMETER: an impossible date, a year outside 1601 to 30827, a tick
// count with the top bit set. The day of week is ignored on the way in and set on the way out.
BOOL SystemTimeToFileTime(const SYSTEMTIME* time, FILETIME* ticks);
BOOL FileTimeToSystemTime(const FILETIME* ticks, SYSTEMTIME* time);

BOOL QueryPerformanceFrequency(LONGLONG* frequency);
BOOL QueryPerformanceCounter(LONGLONG* counter);

}  // namespace ce
