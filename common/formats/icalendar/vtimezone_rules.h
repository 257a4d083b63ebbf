// The time zone that a VTIMEZONE describes.
#pragma once

#include <chrono>
#include <optional>
#include <vector>

#include "common/calendar/wall_time.h"
#include "common/formats/icalendar/icalendar_component.h"
#include "common/formats/icalendar/icalendar_rule.h"

namespace formats {

// Converts as calendar::Zone does: a local time that did not exist is taken with the offset before
// the gap; of one that was twice, the first is taken. Before the first change that the component
// knows, the zone is taken to change as in its first year. Rules are followed up to the year 2200.
class VTimezoneRules {
 public:
  // Nothing for a component that does not say an offset.
  static std::optional<VTimezoneRules> Of(const Component& vtimezone, WorkBudget& budget);

  sys_seconds ToUtc(local_seconds local) const;
  local_seconds ToLocal(sys_seconds utc) const;

 private:
  struct Change {
    sys_seconds at;
    std::chrono::seconds before;
    std::chrono::seconds after;
  };
  static void AddObservance(const Component& observance, std::vector<Change>& changes,
                            WorkBudget& budget);
  bool RepeatsFirstYear() const;
  std::chrono::seconds OffsetAt(sys_seconds utc) const;

  std::vector<Change> changes_;  // ascending, never empty
};

}  // namespace formats
