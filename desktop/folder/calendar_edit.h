// One event, series or to-do in which the lines that say a changed field are changed, and no other.
#pragma once

#include <chrono>
#include <string>
#include <vector>

#include "desktop/folder/calendar_lines.h"

namespace desktop {

struct EditedCalendar {
  bool done = false;
  // One for each of the parts, empty for one that goes; then those that are new.
  std::vector<std::string> parts;
  std::vector<std::string> losses;
};

// `parts` are the events of the item's UID, or the to-do, and what reads them is `context`; `main`
// is the one at the item's line. `from` is what they say.
//
// Times stay in the zone that they are written in, and exceptions follow them. A new exception has
// all that the event has, such as its attendees. What else tells of a change follows it:
// LAST-MODIFIED where there is one, and descriptions in other formats go with the one that they
// repeat. DTSTAMP and SEQUENCE are the organizer's and stay.
EditedCalendar EditCalendarItem(const CalendarContext& context, const CalendarParts& parts,
                                std::size_t main, const Item& from, const Item& to,
                                const LineStyle& style, std::chrono::sys_seconds when);

// The item is one of several that the parts say together, and is taken out of them.
EditedCalendar RemoveOccurrence(const CalendarContext& context, const CalendarParts& parts,
                                std::size_t main, const Item& item, const LineStyle& style);

}  // namespace desktop
