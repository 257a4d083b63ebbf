// Arithmetic on FILETIMEs and conversions that need no failure path.
#pragma once

#include "platform/clock.h"
#include "platform/types.h"

namespace corvane {

inline constexpr ce::LONGLONG kTicksPerSecond = 10'000'000;
inline constexpr ce::LONGLONG kSecondsPerMinute = 60;

ce::ULONGLONG Ticks(const ce::FILETIME& time);
ce::FILETIME AddSeconds(const ce::FILETIME& time, ce::LONGLONG seconds);

// A time that the platform refuses gives ticks that it refuses as well, whatever bias is added.
ce::FILETIME ToFileTime(const ce::SYSTEMTIME& time);
// Zeros, which are no date, for ticks that the platform refuses.
ce::SYSTEMTIME ToSystemTime(const ce::FILETIME& ticks);

}  // namespace corvane
