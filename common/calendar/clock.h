// A wall clock: by how much its time differs from UTC, now and then.
#pragma once

#include <chrono>
#include <optional>
#include <vector>

namespace calendar {

using std::chrono::local_seconds;
using std::chrono::sys_seconds;

struct OffsetChange {
  sys_seconds at;
  std::chrono::seconds offset;  // from then on: local time minus UTC
};

struct Clock {
  std::chrono::seconds firstOffset{};      // before all changes
  std::vector<OffsetChange> changes = {};  // ascending
  // From here on it changes in each 400 years as in the first, which are among the changes whole.
  std::optional<sys_seconds> cycle = {};
  // Before its first change it changes as in the year behind that.
  bool repeatsFirstYear = false;

  std::chrono::seconds OffsetAt(sys_seconds utc) const;
  local_seconds ToLocal(sys_seconds utc) const;
  // A local time that did not exist is taken with the offset before the gap; of one that was twice,
  // the first is taken. Two changes are more than two days apart.
  sys_seconds ToUtc(local_seconds local) const;
};

}  // namespace calendar
