#include "common/formats/items/normal_form.h"

#include <algorithm>
#include <chrono>
#include <optional>

#include "common/calendar/wall_time.h"

namespace formats {
namespace {

using calendar::Pattern;
using std::chrono::days;

// Says the end in that way; the first day, or nothing for a pattern that has none.
std::optional<local_days> Normalize(Pattern& pattern, local_days start, SeriesEnd end) {
  if (!IsValid(pattern)) return std::nullopt;
  const std::optional<local_days> first = NextDayOf(pattern, start, start);
  if (!first) return std::nullopt;
  if (end == SeriesEnd::kDay) {
    pattern.until = LastDayOf(pattern, start);
    pattern.occurrences.reset();
  } else if (const std::optional<int> count = CountDaysOf(pattern, start)) {
    // A handheld tells the end in both ways, and takes the number first. It has no days beyond its
    // last one, so that a number can be smaller than it was, too.
    pattern.until.reset();
    pattern.occurrences = count;
  }
  return first;
}

void GiveEnd(Occurrence& occurrence) {
  if (!occurrence.end) occurrence.end = occurrence.start;
}

void MoveTo(Occurrence& occurrence, local_days day) {
  const days shift = day - DayOf(*occurrence.start);
  *occurrence.start += shift;
  *occurrence.end += shift;
}

}  // namespace

Appointment Normalized(Appointment appointment, SeriesEnd end) {
  GiveEnd(appointment);
  if (!appointment.series) return appointment;
  Series& series = *appointment.series;
  const Pattern pattern = series.pattern;
  const local_days start = DayOf(appointment.start.value_or(calendar::kFirstDay));
  const auto first = appointment.start ? Normalize(series.pattern, start, end) : std::nullopt;
  if (!first) {
    if (end == SeriesEnd::kDay) appointment.series.reset();
    return appointment;
  }
  MoveTo(appointment, *first);
  for (ChangedOccurrence& change : series.changed) GiveEnd(change.occurrence);
  if (end == SeriesEnd::kDay) {
    std::erase_if(series.changed,
                  [](const ChangedOccurrence& change) { return !change.occurrence.start; });
    return appointment;
  }
  const auto isNoDay = [&](local_days day) { return !IsDayOf(pattern, start, day); };
  std::erase_if(series.deleted, isNoDay);
  Occurrence usual = appointment;
  std::erase_if(series.changed, [&](const ChangedOccurrence& change) {
    if (isNoDay(change.original)) return true;
    MoveTo(usual, change.original);
    return change.occurrence == usual;
  });
  return appointment;
}

Task Normalized(Task task, SeriesEnd end) {
  const std::optional<local_days> start = task.start ? task.start : task.due;
  if (!task.pattern) return task;
  const auto first = start ? Normalize(*task.pattern, *start, end) : std::nullopt;
  if (!first) {
    if (end == SeriesEnd::kDay) task.pattern.reset();
    return task;
  }
  if (task.start) *task.start += *first - *start;
  if (task.due) *task.due += *first - *start;
  return task;
}

}  // namespace formats
