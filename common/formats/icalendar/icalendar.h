// iCalendar (RFC 5545, and what RFC 2445 and vCalendar-minded programs left in it): reading what
// other programs wrote, writing for them.
#pragma once

#include <cstddef>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "common/calendar/zone.h"
#include "common/formats/items/appointment.h"
#include "common/formats/items/notice.h"
#include "common/formats/items/task.h"

namespace formats {

struct ParsedAppointment {
  Appointment appointment;
  std::size_t line = 0;  // of its BEGIN:VEVENT
};

struct ParsedTask {
  Task task;
  std::size_t line = 0;  // of its BEGIN:VTODO
};

struct CalendarFile {
  std::vector<ParsedAppointment> appointments;
  std::vector<ParsedTask> tasks;
  std::vector<Notice> notices;  // in the order of their lines
};

// Never fails: whatever cannot be kept becomes a notice. Any bytes are accepted. Instants and other
// zones' times become wall-clock times of `zone`; times without a zone stay as they are. The events
// of one UID are one appointment: its rule, the dates left out, the occurrences changed. What no
// pattern can say (several rules, additional dates, hours) becomes single appointments within a
// bound, each with the UID of the series and its own date behind; a notice says so.
// docs/calendar-mapping.md tells what becomes of each property.
CalendarFile ReadICalendar(std::string_view bytes, const calendar::Zone& zone);

// Whether the bytes look like iCalendar rather than something else.
bool LooksLikeICalendar(std::string_view bytes);

struct CalendarText {
  std::string bytes;
  // What no event or task can say, with the item's name and why.
  std::vector<std::string> losses;
};

// One VCALENDAR with a VTIMEZONE where one is needed, CRLF line ends, lines folded at 75 octets.
// Every item needs a UID. A series is a VEVENT with its rule, EXDATEs, and a VEVENT a changed
// occurrence; it begins with its first day. Reading the bytes back with the same zone gives the
// same items, as far as they follow appointment.h and task.h, a series beginning with its first
// day.
CalendarText WriteICalendar(std::span<const Appointment> appointments, std::span<const Task> tasks,
                            const calendar::Zone& zone);

}  // namespace formats
