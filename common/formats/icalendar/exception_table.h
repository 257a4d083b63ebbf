// What an event's EXDATEs and changed occurrences say, by the times of its own clock.
#pragma once

#include <cstddef>
#include <map>
#include <set>
#include <vector>

#include "common/formats/icalendar/icalendar_event.h"

namespace formats {

class ExceptionTable {
 public:
  // Both must outlive the table. The event has a start.
  ExceptionTable(const Event& master, std::vector<Event>& changes);

  // Whether something is said of the occurrence.
  bool Has(local_seconds wall) const;
  // Every time of which something is said.
  std::set<local_seconds> Times() const;

  // These mark what they find as used.
  bool Excludes(local_seconds wall);
  Event* ChangeOf(local_seconds wall);  // null for none

  // The dates that excluded nothing, with the lines where they stand, and changes that changed
  // nothing.
  std::vector<std::pair<local_seconds, std::size_t>> UnusedDates() const;
  std::vector<Event*> UnusedChanges() const;

 private:
  struct Exclusion {
    std::size_t line = 0;
    bool used = false;
  };
  struct Change {
    Event* event = nullptr;
    bool used = false;
  };

  const Event& master_;
  std::map<local_seconds, Exclusion> excluded_;
  std::map<local_days, Exclusion> excludedDays_;  // of events with times
  std::map<local_seconds, Change> changes_;
};

}  // namespace formats
