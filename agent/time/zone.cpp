#include "agent/time/zone.h"

#include <mutex>

#include "agent/time/file_time.h"

int g_bUseDST = 1;

namespace corvane {
namespace {

constexpr ce::LONGLONG kSecondsPerDay = 86'400;

// The zone as it was last read, and whether that still holds.
struct ZoneCache {
  std::mutex lock;
  ce::TIME_ZONE_INFORMATION zone{};
  bool isLoaded = false;
};

ZoneCache& Cache() {
  static ZoneCache cache;
  return cache;
}

struct ZoneReading {
  ce::TIME_ZONE_INFORMATION zone;
  bool isLoaded;
};

ZoneReading ReadZone() {
  ZoneCache& cache = Cache();
  const std::lock_guard guard(cache.lock);
  if (!cache.isLoaded) {
    ce::TIME_ZONE_INFORMATION zone{};
    cache.isLoaded = ce::GetTimeZoneInformation(&zone) != ce::TIME_ZONE_ID_INVALID;
    if (cache.isLoaded) cache.zone = zone;
  }
  return {cache.zone, cache.isLoaded};
}

}  // namespace

void GetZoneBiases(ce::LONG* biasSeconds, ce::LONG* daylightBiasSeconds) {
  const auto [zone, isLoaded] = ReadZone();
  if (!isLoaded) return;
  if (biasSeconds) *biasSeconds = BiasSeconds(zone);
  if (daylightBiasSeconds) *daylightBiasSeconds = DaylightBiasSeconds(zone);
}

void ResetTimeZoneCache() {
  ZoneCache& cache = Cache();
  const std::lock_guard guard(cache.lock);
  cache.isLoaded = false;
}

int IsDaylightTime(const BrokenDownTime& time) {
  if (g_bUseDST == 0) return 0;
  // A zone that cannot be read leaves the rules of the one before, and no bias.
  const auto [zone, isLoaded] = ReadZone();
  return IsDaylightByRules(zone, isLoaded ? DaylightBiasSeconds(zone) : 0, time) ? 1 : 0;
}

ce::SYSTEMTIME LocalTimeToUtc(const ce::SYSTEMTIME& local) {
  ce::LONG bias = 0;
  ce::LONG daylightBias = 0;
  GetZoneBiases(&bias, &daylightBias);
  if (IsDaylightTime(SystemTimeToBrokenDown(local))) bias += daylightBias;
  return ToSystemTime(AddSeconds(ToFileTime(local), bias));
}

ce::SYSTEMTIME UtcToLocalTime(const ce::SYSTEMTIME& utc) {
  ce::LONG bias = 0;
  ce::LONG daylightBias = 0;
  GetZoneBiases(&bias, &daylightBias);
  const ce::FILETIME standard = AddSeconds(ToFileTime(utc), -ce::LONGLONG{bias});
  const ce::SYSTEMTIME local = ToSystemTime(standard);
  if (!IsDaylightTime(SystemTimeToBrokenDown(local))) return local;
  return ToSystemTime(AddSeconds(standard, -ce::LONGLONG{daylightBias}));
}

ce::LONGLONG FileTimeDiffSeconds(const ce::FILETIME& start, const ce::FILETIME& end) {
  return static_cast<ce::LONGLONG>(Ticks(end) - Ticks(start)) / kTicksPerSecond;
}

int DayOfYear(const ce::SYSTEMTIME& time) {
  ce::SYSTEMTIME newYear{};
  newYear.wYear = time.wYear;
  newYear.wMonth = 1;
  newYear.wDay = 1;
  return static_cast<int>(FileTimeDiffSeconds(ToFileTime(newYear), ToFileTime(time)) /
                          kSecondsPerDay);
}

BrokenDownTime SystemTimeToBrokenDown(const ce::SYSTEMTIME& time) {
  return {.year = time.wYear - 1900,
          .month = time.wMonth - 1,
          .day = time.wDay,
          .dayOfWeek = time.wDayOfWeek,
          .dayOfYear = DayOfYear(time),
          .hour = time.wHour,
          .minute = time.wMinute,
          .second = time.wSecond,
          .isDaylight = 0};
}

}  // namespace corvane
