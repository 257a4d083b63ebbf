// How long the texts of items may be, and what new items begin with.
#pragma once

#include <cstddef>

#include "handheld/directory/handheld.h"
#include "platform/pocket_outlook_calendar.h"

namespace ce::host {

// The handheld's settings that items obey, as they were at Logon.
struct ItemLimits {
  std::size_t text = 1023;          // characters, of a contact's texts
  std::size_t subject = 4095;       // characters
  std::size_t calendarText = 1023;  // characters, of other texts of appointments and tasks
  std::size_t body = 60 * 1024;     // bytes of UTF-16
  bool yomiFields = true;
  bool reminderSet = true;  // of a new appointment
  LONG reminderMinutes = 15;
};
ItemLimits ReadItemLimits(const Handheld& handheld);

enum class TextKind {
  kPlain,     // up to MaxContactText characters
  kFileAs,    // as kPlain; derived from other properties while it was never set
  kBody,      // up to MaxBody bytes of UTF-16
  kYomi,      // as kPlain; only on a handheld that has Yomi fields
  kSubject,   // up to MaxSubject characters
  kCalendar,  // up to MaxCalendarText characters
};

// Characters that a text of this kind may have.
std::size_t LongestText(const ItemLimits& limits, TextKind kind);

// Sensitivity's values: olNormal to olConfidential.
constexpr bool IsSensitivity(LONG value) {
  return value >= 0 && value <= 3;
}

constexpr bool IsImportance(LONG value) {
  return value >= olImportanceLow && value <= olImportanceHigh;
}

}  // namespace ce::host
