// Reading events and to-dos in a test.
#pragma once

#include <gtest/gtest.h>

#include <functional>
#include <ostream>
#include <string>
#include <string_view>
#include <vector>

#include "common/formats/icalendar/icalendar.h"
#include "tests/common/formats/vcard/card_support.h"

namespace formats {

// How GoogleTest shows them: as JSON.
void PrintTo(const Appointment& appointment, std::ostream* out);
void PrintTo(const Task& task, std::ostream* out);

namespace testing {

using Strings = std::vector<std::string>;

// Runs a check for every line of a file of cases in this folder: its fields, cut at " | " and
// filled up to four. Comments (#) and empty lines are none.
void ForEachCase(const std::string& file, const std::function<void(const Strings&)>& check);
// What stands as "a / b" in a case, with a line end behind each.
std::string LinesOf(std::string_view field);
// The notices of a case: "a / b".
std::string Joined(const Strings& notices);

calendar::Zone ZoneOf(std::string_view name);

local_days Day(int year, unsigned month, unsigned day);
local_seconds At(int year, unsigned month, unsigned day, int hour, int minute = 0, int second = 0);

// A VCALENDAR with these lines from line 3 on.
CalendarFile ReadLines(std::string_view lines, std::string_view zone = "Europe/Berlin");
// One VEVENT or VTODO with these lines from line 4 on; the test fails unless it gives one item.
struct ReadItem {
  Appointment appointment;
  Task task;
  Strings notices;  // "5: ATTENDEE: a handheld keeps no participants"
};
ReadItem ReadEventLines(std::string_view lines, std::string_view zone = "Europe/Berlin");
ReadItem ReadTodoLines(std::string_view lines, std::string_view zone = "Europe/Berlin");

// "2008-02-15T13:45:00 - 2008-02-15T14:00:00", of whole days "2008-02-15 - 2008-02-15".
std::string ShowTimes(const Occurrence& occurrence);
// The RRULE that says the pattern.
std::string ShowRule(const calendar::Pattern& pattern);
Strings ShowDays(const std::vector<local_days>& days);
// The original day and the times of each.
Strings ShowChanges(const Series& series);
Strings Uids(const CalendarFile& file);
Strings Subjects(const CalendarFile& file);

}  // namespace testing
}  // namespace formats
