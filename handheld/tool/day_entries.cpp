#include "handheld/tool/day_entries.h"

#include <fmt/core.h>

#include <array>
#include <chrono>

#include "common/calendar/wall_time.h"
#include "common/text/text.h"

namespace tool {
namespace {

using formats::local_days;
using page::PlacedOccurrence;

std::string TimesOn(local_days day, const PlacedOccurrence& placed) {
  const page::DayRange days = placed.days();
  const bool begins = day == days.first;
  const bool ends = day == days.last;
  if (placed.said->allDay || (!begins && !ends)) return "all day";
  if (placed.start == placed.end) return ClockTime(placed.start);
  const bool atMidnight = formats::DayOf(placed.end) > days.last;
  return (begins ? ClockTime(placed.start) : "") + "-" +
         (!ends        ? ""
          : atMidnight ? "24:00"
                       : ClockTime(placed.end));
}

DayEntry EntryOn(local_days day, const PlacedOccurrence& placed) {
  DayEntry entry{TimesOn(day, placed), text::OnOneLine(placed.said->subject), ""};
  if (entry.subject.empty()) entry.subject = "(no subject)";
  const std::string place = text::OnOneLine(placed.said->location);
  if (!place.empty()) entry.more = " (" + place + ")";
  const page::DayRange days = placed.days();
  if (days.last > days.first)
    entry.more += fmt::format(", day {} of {}", (day - days.first).count() + 1,
                              (days.last - days.first).count() + 1);
  return entry;
}

}  // namespace

std::vector<DayEntry> EntriesOn(local_days day, std::span<const PlacedOccurrence> placed) {
  std::vector<DayEntry> entries;
  for (const PlacedOccurrence& each : placed) {
    const page::DayRange days = each.days();
    if (days.first <= day && day <= days.last) entries.push_back(EntryOn(day, each));
  }
  return entries;
}

std::string ClockTime(formats::local_seconds time) {
  return formats::IsoDateTime(time).substr(11, 5);
}

std::string WeekdayName(local_days day) {
  constexpr std::array kNames = {"Sunday",   "Monday", "Tuesday", "Wednesday",
                                 "Thursday", "Friday", "Saturday"};
  return kNames[std::chrono::weekday(day).c_encoding()];
}

std::string MonthName(std::chrono::month month) {
  constexpr std::array kNames = {"January",   "February", "March",    "April",
                                 "May",       "June",     "July",     "August",
                                 "September", "October",  "November", "December"};
  return kNames[static_cast<unsigned>(month) - 1];
}

std::string LongDay(local_days day) {
  const std::chrono::year_month_day date(day);
  return fmt::format("{} {} {} {}", WeekdayName(day), static_cast<unsigned>(date.day()),
                     MonthName(date.month()), static_cast<int>(date.year()));
}

int IsoWeek(local_days monday) {
  const std::chrono::year_month_day thursday(monday + std::chrono::days(3));
  const local_days newYear(thursday.year() / 1 / 1);
  return static_cast<int>((local_days(thursday) - newYear).count() / 7) + 1;
}

}  // namespace tool
