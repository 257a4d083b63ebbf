// Between people's patterns and those of Pocket Outlook's items.
#pragma once

#include "common/calendar/pattern.h"
#include "handheld/tool/status_error.h"
#include "platform/com_ptr.h"
#include "platform/pocket_outlook_calendar.h"

namespace tool {

// A series that ends has the day of its end, not a count. Throws StatusError.
calendar::Pattern ReadPattern(ce::IRecurrencePattern& pattern);

// Whether a handheld can keep the pattern from that start on, and what to say of one that it
// cannot.
bool HasDays(const calendar::Pattern& pattern, calendar::local_days start);
inline constexpr char kNoDays[] = "Recurrence: the series has no day that a handheld keeps";

// Sets everything but the start, which is the item's. Throws StatusError.
void WritePattern(const calendar::Pattern& from, ce::IRecurrencePattern& pattern);

template <typename Item>
ce::ComPtr<ce::IRecurrencePattern> PatternOf(Item& item) {
  ce::ComPtr<ce::IRecurrencePattern> pattern;
  Check(item.GetRecurrencePattern(pattern.put()), "the recurrence");
  return pattern;
}

}  // namespace tool
