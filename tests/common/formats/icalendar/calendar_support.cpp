#include "tests/common/formats/icalendar/calendar_support.h"

#include <algorithm>
#include <fstream>
#include <stdexcept>

#include "common/calendar/wall_time.h"
#include "common/formats/icalendar/pattern_rule.h"
#include "common/formats/items/item_json.h"
#include "tests/support/paths.h"

namespace formats {

void PrintTo(const Appointment& appointment, std::ostream* out) {
  *out << AppointmentToJson(appointment, 0);
}

void PrintTo(const Task& task, std::ostream* out) {
  *out << TaskToJson(task, 0);
}

namespace testing {
namespace {

Strings Cut(std::string_view text, std::string_view separator) {
  Strings parts;
  while (true) {
    const std::size_t end = text.find(separator);
    parts.emplace_back(text.substr(0, end));
    if (end == std::string_view::npos) return parts;
    text.remove_prefix(end + separator.size());
  }
}

}  // namespace

void ForEachCase(const std::string& file, const std::function<void(const Strings&)>& check) {
  std::ifstream in(corvane::testing::SourcePath("tests/common/formats/icalendar/" + file));
  int cases = 0;
  for (std::string line; std::getline(in, line);) {
    if (line.empty() || line.starts_with('#')) continue;
    SCOPED_TRACE(line);
    Strings fields = Cut(line, " | ");
    fields.resize(std::max<std::size_t>(fields.size(), 4));
    check(fields);
    ++cases;
  }
  EXPECT_GT(cases, 0) << file;
}

std::string LinesOf(std::string_view field) {
  std::string lines;
  if (field.empty()) return lines;
  for (const std::string& line : Cut(field, " / ")) lines += line + "\n";
  return lines;
}

std::string Joined(const Strings& notices) {
  std::string joined;
  for (const std::string& notice : notices) joined += (joined.empty() ? "" : " / ") + notice;
  return joined;
}

calendar::Zone ZoneOf(std::string_view name) {
  std::optional<calendar::Zone> zone = calendar::Zone::Find(name);
  if (!zone) throw std::runtime_error("the zone database has no " + std::string(name));
  return *zone;
}

local_days Day(int year, unsigned month, unsigned day) {
  return local_days{std::chrono::year{year} / std::chrono::month{month} / std::chrono::day{day}};
}

local_seconds At(int year, unsigned month, unsigned day, int hour, int minute, int second) {
  return Day(year, month, day) + std::chrono::hours(hour) + std::chrono::minutes(minute) +
         std::chrono::seconds(second);
}

CalendarFile ReadLines(std::string_view lines, std::string_view zone) {
  std::string text = "BEGIN:VCALENDAR\nVERSION:2.0\n";
  text += lines;
  if (!text.ends_with('\n')) text += '\n';
  return ReadICalendar(text + "END:VCALENDAR\n", ZoneOf(zone));
}

namespace {

CalendarFile ReadComponent(std::string_view name, std::string_view lines, std::string_view zone) {
  std::string text = "BEGIN:" + std::string(name) + "\n";
  text += lines;
  if (!text.ends_with('\n')) text += '\n';
  return ReadLines(text + "END:" + std::string(name) + "\n", zone);
}

}  // namespace

ReadItem ReadEventLines(std::string_view lines, std::string_view zone) {
  const CalendarFile file = ReadComponent("VEVENT", lines, zone);
  EXPECT_EQ(file.appointments.size(), 1u);
  EXPECT_EQ(file.tasks.size(), 0u);
  ReadItem read;
  read.notices = Texts(file.notices);
  if (!file.appointments.empty()) read.appointment = file.appointments.front().appointment;
  return read;
}

ReadItem ReadTodoLines(std::string_view lines, std::string_view zone) {
  const CalendarFile file = ReadComponent("VTODO", lines, zone);
  EXPECT_EQ(file.tasks.size(), 1u);
  EXPECT_EQ(file.appointments.size(), 0u);
  ReadItem read;
  read.notices = Texts(file.notices);
  if (!file.tasks.empty()) read.task = file.tasks.front().task;
  return read;
}

std::string ShowTimes(const Occurrence& occurrence) {
  if (!occurrence.start || !occurrence.end) return "incomplete";
  if (!occurrence.allDay) {
    return IsoDateTime(*occurrence.start) + " - " + IsoDateTime(*occurrence.end);
  }
  return IsoDate(DayOf(*occurrence.start)) + " - " +
         IsoDate(DayOf(*occurrence.end) - std::chrono::days(1));
}

std::string ShowRule(const calendar::Pattern& pattern) {
  return RuleOf(pattern) + (pattern.until ? ";UNTIL=" + BasicDate(*pattern.until) : "");
}

Strings ShowDays(const std::vector<local_days>& days) {
  Strings shown;
  for (const local_days day : days) shown.push_back(IsoDate(day));
  return shown;
}

Strings ShowChanges(const Series& series) {
  Strings shown;
  for (const ChangedOccurrence& change : series.changed) {
    shown.push_back(IsoDate(change.original) + ": " + ShowTimes(change.occurrence));
  }
  return shown;
}

Strings Uids(const CalendarFile& file) {
  Strings uids;
  for (const ParsedAppointment& read : file.appointments) uids.push_back(read.appointment.uid);
  return uids;
}

Strings Subjects(const CalendarFile& file) {
  Strings subjects;
  for (const ParsedAppointment& read : file.appointments) {
    subjects.push_back(read.appointment.subject);
  }
  return subjects;
}

}  // namespace testing
}  // namespace formats
