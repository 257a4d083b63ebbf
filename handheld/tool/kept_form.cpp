#include "handheld/tool/kept_form.h"

#include "common/calendar/wall_time.h"
#include "handheld/tool/recurrence.h"

namespace tool {
namespace {

using calendar::Pattern;
using std::chrono::days;
using std::chrono::local_days;

void SayEndAsDay(Pattern& pattern, local_days start) {
  if (!pattern.occurrences && !pattern.until) return;
  pattern.until = calendar::LastDayOf(pattern, start);
  pattern.occurrences.reset();
}

// An event that ends at no time ends when it starts.
void EndSomewhere(formats::Occurrence& occurrence) {
  if (!occurrence.end) occurrence.end = occurrence.start;
}

}  // namespace

formats::Appointment KeptForm(formats::Appointment appointment) {
  EndSomewhere(appointment);
  if (!appointment.series) return appointment;
  formats::Series& series = *appointment.series;
  const local_days start =
      appointment.start ? formats::DayOf(*appointment.start) : calendar::kFirstDay;
  if (!appointment.start || !HasDays(series.pattern, start)) {
    appointment.series.reset();
    return appointment;
  }
  SayEndAsDay(series.pattern, start);
  const days shift = *calendar::NextDayOf(series.pattern, start, start) - start;
  *appointment.start += shift;
  *appointment.end += shift;
  std::erase_if(series.changed, [](const formats::ChangedOccurrence& changed) {
    return !changed.occurrence.start;
  });
  for (formats::ChangedOccurrence& changed : series.changed) EndSomewhere(changed.occurrence);
  return appointment;
}

formats::Task KeptForm(formats::Task task) {
  if (!task.pattern) return task;
  const std::optional<local_days> start = task.start ? task.start : task.due;
  if (!start || !HasDays(*task.pattern, *start)) {
    task.pattern.reset();
    return task;
  }
  SayEndAsDay(*task.pattern, *start);
  const days shift = *calendar::NextDayOf(*task.pattern, *start, *start) - *start;
  if (task.start) *task.start += shift;
  if (task.due) *task.due += shift;
  return task;
}

}  // namespace tool
