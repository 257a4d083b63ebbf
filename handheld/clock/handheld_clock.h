// The handheld's own clock: the host's, moved by an offset that the registry keeps.
#pragma once

#include <mutex>
#include <optional>

#include "platform/types.h"

namespace ce::host {

class Registry;

// Thread-safe. Times are UTC, in 100-nanosecond ticks since 1601-01-01.
class Clock {
 public:
  // Goes by the offset that `registry` holds, which must outlive the clock.
  explicit Clock(Registry& registry);

  LONGLONG Now() const;

  // Sets this clock and nothing else; durable when it returns 0. A frozen clock stands still at the
  // new time. ERROR_INVALID_PARAMETER outside what a FILETIME can hold.
  [[nodiscard]] DWORD Set(LONGLONG ticks);

  // Stops the clock, for tests, in this process only.
  void Freeze(LONGLONG ticks);

 private:
  Registry& registry_;
  mutable std::mutex lock_;
  LONGLONG offset_ = 0;  // milliseconds
  std::optional<LONGLONG> frozen_;
};

inline constexpr LONGLONG kTicksPerMillisecond = 10'000;
inline constexpr LONGLONG kTicksPerSecond = 10'000'000;
inline constexpr WORD kFirstYear = 1601;
inline constexpr WORD kLastYear = 30827;

// False and nothing written for a time that no calendar has, or outside the first to the last year.
bool TicksFromSystemTime(const SYSTEMTIME& time, LONGLONG& ticks);
// `ticks` must not be negative.
SYSTEMTIME SystemTimeFromTicks(LONGLONG ticks);

}  // namespace ce::host
