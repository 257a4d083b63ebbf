#include "common/calendar/clock.h"

#include <algorithm>
#include <iterator>

namespace calendar {
namespace {

using std::chrono::days;
using std::chrono::seconds;

constexpr seconds kYear = std::chrono::years{1};
// The calendar repeats after so many days, weekdays included.
constexpr seconds kCycleSpan = days{146'097};

}  // namespace

seconds Clock::OffsetAt(sys_seconds utc) const {
  if (cycle && utc >= *cycle) utc = *cycle + (utc - *cycle) % kCycleSpan;
  if (repeatsFirstYear && utc < changes.front().at) {
    utc += ((changes.front().at - utc - seconds{1}) / kYear + 1) * kYear;
  }
  const auto later = std::upper_bound(
      changes.begin(), changes.end(), utc,
      [](sys_seconds time, const OffsetChange& change) { return time < change.at; });
  return later == changes.begin() ? firstOffset : std::prev(later)->offset;
}

local_seconds Clock::ToLocal(sys_seconds utc) const {
  return local_seconds{utc.time_since_epoch()} + OffsetAt(utc);
}

sys_seconds Clock::ToUtc(local_seconds local) const {
  const sys_seconds wall{local.time_since_epoch()};
  // The offsets that can be in force when it shows this time are those of a day before and after.
  const seconds early = OffsetAt(wall - days{1});
  if (OffsetAt(wall - early) == early) return wall - early;
  const seconds late = OffsetAt(wall + days{1});
  return OffsetAt(wall - late) == late ? wall - late : wall - early;
}

}  // namespace calendar
