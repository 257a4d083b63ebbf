#include "desktop/sync/normal_form.h"

#include <algorithm>
#include <chrono>
#include <optional>

namespace desktop {
namespace {

using calendar::Pattern;
using formats::Appointment;
using formats::ChangedOccurrence;
using formats::Occurrence;
using formats::Series;
using namespace std::chrono;

// A handheld tells the end of a series in both ways, and takes the number first. It has no days
// beyond its last one, so that a number can be smaller than it was, too.
void CountOccurrences(Pattern& pattern, local_days start) {
  const std::optional<int> count = CountDaysOf(pattern, start);
  if (!count || *count < 1) return;
  pattern.until.reset();
  pattern.occurrences = count;
}

void GiveEnd(Occurrence& occurrence) {
  if (!occurrence.end) occurrence.end = occurrence.start;
}

void MoveTo(Occurrence& occurrence, local_days day) {
  const days shift = day - floor<days>(*occurrence.start);
  *occurrence.start += shift;
  *occurrence.end += shift;
}

}  // namespace

Appointment Normalized(Appointment appointment) {
  GiveEnd(appointment);
  if (!appointment.series || !appointment.start) return appointment;
  Series& series = *appointment.series;
  const local_days start = floor<days>(*appointment.start);
  const Pattern pattern = series.pattern;
  const auto first = NextDayOf(pattern, start, start);
  if (!first) return appointment;

  const auto isNoDay = [&](local_days day) { return !IsDayOf(pattern, start, day); };
  std::erase_if(series.deleted, isNoDay);
  MoveTo(appointment, *first);
  Occurrence usual = appointment;
  for (ChangedOccurrence& change : series.changed) GiveEnd(change.occurrence);
  std::erase_if(series.changed, [&](const ChangedOccurrence& change) {
    if (isNoDay(change.original)) return true;
    MoveTo(usual, change.original);
    return change.occurrence == usual;
  });
  CountOccurrences(series.pattern, start);
  return appointment;
}

formats::Task Normalized(formats::Task task) {
  const std::optional<local_days> start = task.start ? task.start : task.due;
  if (!task.pattern || !start) return task;
  const std::optional<local_days> first = NextDayOf(*task.pattern, *start, *start);
  if (!first) return task;
  CountOccurrences(*task.pattern, *start);
  if (task.start) *task.start += *first - *start;
  if (task.due) *task.due += *first - *start;
  return task;
}

}  // namespace desktop
