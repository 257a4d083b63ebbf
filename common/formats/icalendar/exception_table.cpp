#include "common/formats/icalendar/exception_table.h"

#include <utility>

namespace formats {

ExceptionTable::ExceptionTable(const Event& master, std::vector<Event>& changes) : master_(master) {
  for (const ListedDate& date : master.exceptionDates) {
    if (date.moment.isDate && !master.start->isDate) {
      excludedDays_.try_emplace(DayOf(date.moment.wall), Exclusion{date.line});
    } else {
      excluded_.try_emplace(SeriesTimeOf(master, date.moment), Exclusion{date.line});
    }
  }
  for (Event& change : changes) {
    changes_.try_emplace(SeriesTimeOf(master, *change.recurrenceId), Change{&change});
  }
}

bool ExceptionTable::Has(local_seconds wall) const {
  return excluded_.contains(wall) || excludedDays_.contains(DayOf(wall)) || changes_.contains(wall);
}

std::set<local_seconds> ExceptionTable::Times() const {
  std::set<local_seconds> times;
  const auto clock = master_.start->wall - DayOf(master_.start->wall);
  for (const auto& [wall, exclusion] : excluded_) times.insert(wall);
  for (const auto& [day, exclusion] : excludedDays_) times.insert(day + clock);
  for (const auto& [wall, change] : changes_) times.insert(wall);
  return times;
}

bool ExceptionTable::Excludes(local_seconds wall) {
  bool excludes = false;
  if (const auto found = excluded_.find(wall); found != excluded_.end()) {
    found->second.used = excludes = true;
  }
  if (const auto found = excludedDays_.find(DayOf(wall)); found != excludedDays_.end()) {
    found->second.used = excludes = true;
  }
  return excludes;
}

Event* ExceptionTable::ChangeOf(local_seconds wall) {
  const auto found = changes_.find(wall);
  if (found == changes_.end()) return nullptr;
  found->second.used = true;
  return found->second.event;
}

std::vector<std::pair<local_seconds, std::size_t>> ExceptionTable::UnusedDates() const {
  std::vector<std::pair<local_seconds, std::size_t>> unused;
  for (const auto& [wall, exclusion] : excluded_) {
    if (!exclusion.used) unused.emplace_back(wall, exclusion.line);
  }
  for (const auto& [day, exclusion] : excludedDays_) {
    if (!exclusion.used) unused.emplace_back(day, exclusion.line);
  }
  return unused;
}

std::vector<Event*> ExceptionTable::UnusedChanges() const {
  std::vector<Event*> unused;
  for (const auto& [wall, change] : changes_) {
    if (!change.used) unused.push_back(change.event);
  }
  return unused;
}

}  // namespace formats
