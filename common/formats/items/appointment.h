// An appointment as people's programs exchange it: independent of wire, store and iCalendar.
//
// Text is UTF-8, with any line breaks. Times are wall-clock times of the handheld's zone, years
// 1900 to 2999.
#pragma once

#include <chrono>
#include <optional>
#include <string>
#include <vector>

#include "common/calendar/pattern.h"

namespace formats {

using std::chrono::local_days;
using std::chrono::local_seconds;

enum class BusyStatus { kFree = 0, kTentative = 1, kBusy = 2, kOutOfOffice = 3 };

// What an occurrence may have otherwise than its series.
struct Occurrence {
  std::string subject;
  std::string location;
  std::string body;
  // Start and end at midnight then, the end that after the last day, and both are there.
  bool allDay = false;
  // Nothing only for an odd appointment of a handheld, which can be shown but is no event.
  std::optional<local_seconds> start = {};
  std::optional<local_seconds> end = {};                 // not before the start
  int busyStatus = static_cast<int>(BusyStatus::kBusy);  // others than BusyStatus are kept

  friend bool operator==(const Occurrence&, const Occurrence&) = default;
};

struct ChangedOccurrence {
  local_days original;  // the day on which it would have been
  Occurrence occurrence;
  friend bool operator==(const ChangedOccurrence&, const ChangedOccurrence&) = default;
};

struct Series {
  calendar::Pattern pattern;
  std::vector<local_days> deleted;         // ascending, each once, each a day of the pattern
  std::vector<ChangedOccurrence> changed;  // as well, by original; no day of `deleted`
  friend bool operator==(const Series&, const Series&) = default;
};

struct Appointment : Occurrence {
  std::string uid;  // the identity that the other program gave it; empty for none
  // Names: none empty, none twice, none with a comma, which the handheld separates them by.
  std::vector<std::string> categories;
  bool isPrivate = false;
  std::optional<int> reminderMinutes = {};  // before the start, may be negative
  // Its days begin with the first day of the pattern at or after that of `start`; the other
  // occurrences have the time of day and the length of the first.
  std::optional<Series> series = {};
  friend bool operator==(const Appointment&, const Appointment&) = default;
};

// What to call the appointment in a message; never empty.
std::string DisplayName(const Appointment& appointment);

}  // namespace formats
