// A task as people's programs exchange it: independent of wire, store and iCalendar. Text, days and
// categories are as in an appointment.
#pragma once

#include <chrono>
#include <optional>
#include <string>
#include <vector>

#include "common/calendar/pattern.h"

namespace formats {

using std::chrono::local_days;
using std::chrono::local_seconds;

enum class Importance { kLow = 0, kNormal = 1, kHigh = 2 };

struct Task {
  std::string uid;  // the identity that the other program gave it; empty for none
  std::string subject;
  std::string body;
  std::vector<std::string> categories;
  std::optional<local_days> start = {};
  std::optional<local_days> due = {};
  std::optional<local_seconds> reminder = {};
  bool isPrivate = false;
  bool complete = false;
  std::optional<local_days> completed = {};  // only of a complete one
  Importance importance = Importance::kNormal;
  // From `start`, else from `due`.
  std::optional<calendar::Pattern> pattern = {};
  friend bool operator==(const Task&, const Task&) = default;
};

// What to call the task in a message; never empty.
std::string DisplayName(const Task& task);

}  // namespace formats
