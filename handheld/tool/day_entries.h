// What stands on a day of the calendar, in words.
#pragma once

#include <span>
#include <string>
#include <vector>

#include "common/page/occurrences.h"

namespace tool {

struct DayEntry {
  std::string times;    // "09:00-10:30", "all day"; of several days what is of this one: "22:00-"
  std::string subject;  // never empty
  std::string more;     // " (Room 1), day 2 of 3"; or nothing
};

// `placed` is as page::OccurrencesIn gives it; what goes on from a day before comes first.
std::vector<DayEntry> EntriesOn(formats::local_days day,
                                std::span<const page::PlacedOccurrence> placed);

std::string ClockTime(formats::local_seconds time);  // "09:00"
std::string WeekdayName(formats::local_days day);    // "Monday"
std::string MonthName(std::chrono::month month);     // "January"
std::string LongDay(formats::local_days day);        // "Monday 3 January 2028"
int IsoWeek(formats::local_days monday);

}  // namespace tool
