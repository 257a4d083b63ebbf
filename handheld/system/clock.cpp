#include "platform/clock.h"

#include <time.h>

#include "handheld/base/guarded.h"
#include "handheld/clock/handheld_clock.h"
#include "handheld/clock/zone.h"
#include "handheld/directory/handheld.h"

namespace ce {
namespace {

using host::GuardedBool;
using host::Handheld;

constexpr LONGLONG kNanosecondsPerSecond = 1'000'000'000;

}  // namespace

void GetSystemTime(SYSTEMTIME* time) {
  if (!time) return;
  *time = {};
  GuardedBool("GetSystemTime", [&]() -> DWORD {
    Handheld* handheld = Handheld::Current();
    if (!handheld) return ERROR_NOT_READY;
    *time = host::SystemTimeFromTicks(handheld->clock().Now());
    return ERROR_SUCCESS;
  });
}

BOOL SetSystemTime(const SYSTEMTIME* time) {
  return GuardedBool("SetSystemTime", [&]() -> DWORD {
    LONGLONG ticks = 0;
    if (!time || !host::TicksFromSystemTime(*time, ticks)) return ERROR_INVALID_PARAMETER;
    Handheld* handheld = Handheld::Current();
    return handheld ? handheld->clock().Set(ticks) : ERROR_NOT_READY;
  });
}

void GetLocalTime(SYSTEMTIME* time) {
  if (!time) return;
  *time = {};
  GuardedBool("GetLocalTime", [&]() -> DWORD {
    Handheld* handheld = Handheld::Current();
    if (!handheld) return ERROR_NOT_READY;
    const LONGLONG utc = handheld->clock().Now();
    const auto zone = handheld->ZoneRules();
    *time = host::SystemTimeFromTicks(zone ? host::LocalFromUtc(*zone, utc) : utc);
    return ERROR_SUCCESS;
  });
}

DWORD GetTimeZoneInformation(TIME_ZONE_INFORMATION* zone) {
  DWORD state = TIME_ZONE_ID_INVALID;
  GuardedBool("GetTimeZoneInformation", [&]() -> DWORD {
    if (!zone) return ERROR_INVALID_PARAMETER;
    Handheld* handheld = Handheld::Current();
    if (!handheld) return ERROR_NOT_READY;
    const auto rules = handheld->ZoneRules();
    if (!rules) return ERROR_FILE_NOT_FOUND;
    *zone = *rules;
    if (rules->DaylightDate.wMonth == 0) {
      state = TIME_ZONE_ID_UNKNOWN;
    } else {
      const bool daylight = host::IsDaylightAt(*rules, handheld->clock().Now());
      state = daylight ? TIME_ZONE_ID_DAYLIGHT : TIME_ZONE_ID_STANDARD;
    }
    return ERROR_SUCCESS;
  });
  return state;
}

BOOL SystemTimeToFileTime(const SYSTEMTIME* time, FILETIME* ticks) {
  return GuardedBool("SystemTimeToFileTime", [&]() -> DWORD {
    LONGLONG value = 0;
    if (!time || !ticks || !host::TicksFromSystemTime(*time, value)) return ERROR_INVALID_PARAMETER;
    *ticks = {static_cast<DWORD>(value), static_cast<DWORD>(value >> 32)};
    return ERROR_SUCCESS;
  });
}

BOOL FileTimeToSystemTime(const FILETIME* ticks, SYSTEMTIME* time) {
  return GuardedBool("FileTimeToSystemTime", [&]() -> DWORD {
    if (!ticks || !time || ticks->dwHighDateTime >= 0x80000000) return ERROR_INVALID_PARAMETER;
    const SYSTEMTIME value = host::SystemTimeFromTicks(LONGLONG{ticks->dwHighDateTime} << 32 |
                                                       LONGLONG{ticks->dwLowDateTime});
    if (value.wYear > host::kLastYear) return ERROR_INVALID_PARAMETER;
    *time = value;
    return ERROR_SUCCESS;
  });
}

BOOL QueryPerformanceFrequency(LONGLONG* frequency) {
  return GuardedBool("QueryPerformanceFrequency", [&]() -> DWORD {
    if (!frequency) return ERROR_INVALID_PARAMETER;
    *frequency = kNanosecondsPerSecond;
    return ERROR_SUCCESS;
  });
}

BOOL QueryPerformanceCounter(LONGLONG* counter) {
  return GuardedBool("QueryPerformanceCounter", [&]() -> DWORD {
    timespec now{};
    if (!counter) return ERROR_INVALID_PARAMETER;
    if (::clock_gettime(CLOCK_MONOTONIC, &now) != 0) return ERROR_GEN_FAILURE;
    *counter = LONGLONG{now.tv_sec} * kNanosecondsPerSecond + now.tv_nsec;
    return ERROR_SUCCESS;
  });
}

}  // namespace ce
