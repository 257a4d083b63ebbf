// Any bytes as an iCalendar file: the reader takes them, and what it made of them can be written
// and read again without a loss.
#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <optional>
#include <string_view>
#include <vector>

#include "common/formats/icalendar/icalendar.h"
#include "common/text/unicode.h"
#include "fuzz/require.h"

namespace {

using formats::local_days;
using fuzz::Require;

void RequireText(const std::string& text) {
  Require(text::IsValidUtf8(text));
}

void RequireCategories(const std::vector<std::string>& categories) {
  for (const std::string& category : categories) {
    RequireText(category);
    Require(!category.empty() && category.find(',') == std::string::npos);
  }
}

void RequireOccurrence(const formats::Occurrence& occurrence) {
  for (const std::string* text : {&occurrence.subject, &occurrence.location, &occurrence.body}) {
    RequireText(*text);
  }
  Require(occurrence.start && occurrence.end && *occurrence.start <= *occurrence.end);
  Require(*occurrence.start >= calendar::kFirstDay);
  Require(*occurrence.end <= calendar::kLastDay + std::chrono::days(1));
  if (!occurrence.allDay) return;
  for (const auto& time : {*occurrence.start, *occurrence.end}) {
    Require(time == std::chrono::floor<std::chrono::days>(time));
  }
  Require(*occurrence.start < *occurrence.end);
}

void RequireSeries(const formats::Series& series, local_days start) {
  Require(calendar::IsValid(series.pattern));
  Require(calendar::NextDayOf(series.pattern, start, start) == start);
  Require(std::is_sorted(series.deleted.begin(), series.deleted.end()));
  std::optional<local_days> last;
  for (const formats::ChangedOccurrence& change : series.changed) {
    Require(!last || *last < change.original);
    last = change.original;
    RequireOccurrence(change.occurrence);
    Require(!std::binary_search(series.deleted.begin(), series.deleted.end(), change.original));
  }
}

void RequireItems(const formats::CalendarFile& file) {
  for (const formats::ParsedAppointment& read : file.appointments) {
    const formats::Appointment& appointment = read.appointment;
    RequireText(appointment.uid);
    RequireCategories(appointment.categories);
    RequireOccurrence(appointment);
    if (appointment.series) {
      RequireSeries(*appointment.series, std::chrono::floor<std::chrono::days>(*appointment.start));
    }
    Require(!DisplayName(appointment).empty());
  }
  for (const formats::ParsedTask& read : file.tasks) {
    RequireText(read.task.uid);
    RequireText(read.task.subject);
    RequireText(read.task.body);
    RequireCategories(read.task.categories);
    Require(!read.task.pattern || calendar::IsValid(*read.task.pattern));
    Require(!DisplayName(read.task).empty());
  }
  for (const formats::Notice& notice : file.notices) {
    Require(notice.line > 0);
    RequireText(notice.text);
  }
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  static const calendar::Zone zone =
      calendar::Zone::Find("Europe/Berlin").value_or(calendar::Zone::OfHost());
  const std::string_view bytes(reinterpret_cast<const char*>(data), size);
  formats::LooksLikeICalendar(bytes);
  const formats::CalendarFile file = formats::ReadICalendar(bytes, zone);
  RequireItems(file);

  std::vector<formats::Appointment> appointments;
  std::vector<formats::Task> tasks;
  for (const formats::ParsedAppointment& read : file.appointments) {
    appointments.push_back(read.appointment);
    appointments.back().uid = std::to_string(appointments.size());
  }
  for (const formats::ParsedTask& read : file.tasks) {
    tasks.push_back(read.task);
    tasks.back().uid = std::to_string(tasks.size());
    // One of an hour that was left out, or was twice, is an instant's when it comes back.
    if (auto& reminder = tasks.back().reminder) reminder = zone.ToLocal(zone.ToUtc(*reminder));
  }
  const formats::CalendarText text = formats::WriteICalendar(appointments, tasks, zone);
  Require(text.losses.empty());
  const formats::CalendarFile again = formats::ReadICalendar(text.bytes, zone);
  Require(again.appointments.size() == appointments.size() && again.tasks.size() == tasks.size());
  for (std::size_t i = 0; i < appointments.size(); ++i) {
    Require(again.appointments[i].appointment == appointments[i]);
  }
  for (std::size_t i = 0; i < tasks.size(); ++i) Require(again.tasks[i].task == tasks[i]);
  return 0;
}
