#include "handheld/clock/handheld_clock.h"

#include <charconv>
#include <chrono>
#include <string>

#include "common/text/unicode.h"
#include "handheld/base/settings.h"
#include "handheld/registry/registry_store.h"

namespace ce::host {
namespace {

using Days = std::chrono::days;

constexpr LONGLONG kTicksPerDay = 24 * 3600 * kTicksPerSecond;
// An offset beyond this would overflow; no calendar time needs it.
constexpr LONGLONG kMaxOffset = LONGLONG{30000} * 366 * 24 * 3600 * 1000;

constexpr std::chrono::sys_days kEpoch{std::chrono::year{kFirstYear} / 1 / 1};

LONGLONG HostNow() {
  using Ticks = std::chrono::duration<LONGLONG, std::ratio<1, kTicksPerSecond>>;
  const auto sinceUnix = std::chrono::system_clock::now().time_since_epoch();
  return std::chrono::duration_cast<Ticks>(sinceUnix).count() -
         kEpoch.time_since_epoch().count() * kTicksPerDay;
}

LONGLONG ReadOffset(const Registry& registry) {
  const auto value = registry.Value(setting::kKey, setting::kClockOffset);
  const std::string text = text::ToUtf8Lossy(value ? value->AsText().value_or(u"") : u"");
  LONGLONG offset = 0;
  const char* end = text.data() + text.size();
  const auto parsed = std::from_chars(text.data(), end, offset);
  const bool usable = parsed.ec == std::errc{} && parsed.ptr == end && offset <= kMaxOffset &&
                      offset >= -kMaxOffset;
  return usable ? offset : 0;
}

}  // namespace

Clock::Clock(Registry& registry) : registry_(registry), offset_(ReadOffset(registry)) {}

LONGLONG Clock::Now() const {
  const std::lock_guard guard(lock_);
  if (frozen_) return *frozen_;
  const LONGLONG now = HostNow() + offset_ * kTicksPerMillisecond;
  return now < 0 ? 0 : now;
}

DWORD Clock::Set(LONGLONG ticks) {
  if (ticks < 0) return ERROR_INVALID_PARAMETER;
  const std::lock_guard guard(lock_);
  const LONGLONG change = ticks - HostNow();
  // Rounded up, so that the clock never shows less than it was set to.
  const LONGLONG offset =
      change / kTicksPerMillisecond + (change > 0 && change % kTicksPerMillisecond != 0 ? 1 : 0);
  if (offset > kMaxOffset) return ERROR_INVALID_PARAMETER;
  const std::string text = std::to_string(offset);
  if (const DWORD error =
          registry_.SetValue(setting::kKey, setting::kClockOffset,
                             RegistryValue::Text(std::u16string(text.begin(), text.end())))) {
    return error;
  }
  offset_ = offset;
  if (frozen_) frozen_ = ticks;
  return ERROR_SUCCESS;
}

void Clock::Freeze(LONGLONG ticks) {
  const std::lock_guard guard(lock_);
  frozen_ = ticks;
}

bool TicksFromSystemTime(const SYSTEMTIME& time, LONGLONG& ticks) {
  const std::chrono::year_month_day date{
      std::chrono::year{time.wYear}, std::chrono::month{time.wMonth}, std::chrono::day{time.wDay}};
  if (time.wYear < kFirstYear || time.wYear > kLastYear || !date.ok()) return false;
  if (time.wHour > 23 || time.wMinute > 59 || time.wSecond > 59 || time.wMilliseconds > 999) {
    return false;
  }
  const LONGLONG days = (std::chrono::sys_days{date} - kEpoch).count();
  const LONGLONG seconds = (time.wHour * 60 + time.wMinute) * 60 + time.wSecond;
  ticks =
      days * kTicksPerDay + seconds * kTicksPerSecond + time.wMilliseconds * kTicksPerMillisecond;
  return true;
}

SYSTEMTIME SystemTimeFromTicks(LONGLONG ticks) {
  const std::chrono::sys_days day = kEpoch + Days{ticks / kTicksPerDay};
  const std::chrono::year_month_day date{day};
  const LONGLONG milliseconds = ticks % kTicksPerDay / kTicksPerMillisecond;
  const auto part = [milliseconds](LONGLONG unit, LONGLONG count) {
    return static_cast<WORD>(milliseconds / unit % count);
  };
  return {static_cast<WORD>(static_cast<int>(date.year())),
          static_cast<WORD>(static_cast<unsigned>(date.month())),
          static_cast<WORD>(std::chrono::weekday{day}.c_encoding()),
          static_cast<WORD>(static_cast<unsigned>(date.day())),
          part(3'600'000, 24),
          part(60'000, 60),
          part(1'000, 60),
          part(1, 1'000)};
}

}  // namespace ce::host
