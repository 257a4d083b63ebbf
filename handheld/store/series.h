// The recurrence of an item: its pattern, as it is set, saved and computed with.
#pragma once

#include <array>
#include <chrono>
#include <optional>

#include "common/calendar/pattern.h"
#include "handheld/store/ole_date.h"
#include "handheld/store/store.h"

namespace ce::host {

struct Series {
  calendar::Pattern pattern;  // without its end
  bool ends = false;
  // Both are known once it was saved; then the number of occurrences is what stays when the rest
  // changes. While it is being set, one that was not set is unknown.
  LONG occurrences = 0;
  std::optional<local_days> until;
  // The pattern's first day while the item has no date of its own to start from.
  local_days startDay = kFirstItemDay;
};

// Weekly on the weekday of its start, without an end.
Series FreshSeries(local_days start);

// Makes it what is saved: both ends known, the last day one that has an occurrence. False, and
// nothing changed, for one that cannot be saved: no occurrence, or an end that was never set.
[[nodiscard]] bool FinishSeries(Series& series, local_days start);

// Of a series that was saved.
bool HasDay(const Series& series, local_days start, local_days day);

// Its columns in the store: RecurrenceType is NULL, and all the others with it, for no series.
inline constexpr std::array kSeriesColumns = {
    "RecurrenceType", "Interval",    "DayOfWeekMask",  "DayOfMonth",      "Instance",
    "MonthOfYear",    "Occurrences", "PatternEndDate", "PatternStartDate"};
void BindSeries(Statement& statement, int parameter, const std::optional<Series>& series);
void LoadSeries(const Statement& statement, int column, std::optional<Series>& series);

}  // namespace ce::host
