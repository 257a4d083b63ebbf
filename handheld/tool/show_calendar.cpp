#include "handheld/tool/show_calendar.h"

#include <fmt/core.h>

#include <algorithm>
#include <chrono>
#include <functional>
#include <string>
#include <vector>

#include "common/calendar/wall_time.h"
#include "common/formats/items/item_json.h"
#include "handheld/tool/day_entries.h"
#include "handheld/tool/handheld_facts.h"
#include "handheld/tool/month_grid.h"
#include "handheld/tool/records.h"
#include "handheld/tool/table.h"

namespace tool {
namespace {

using formats::Appointment;
using formats::local_days;
using page::DayRange;
using page::PlacedOccurrence;
using Placed = std::vector<PlacedOccurrence>;

// So many days are looked at together, so that memory does not grow with those that are asked for.
constexpr std::chrono::days kAtATime{31};
// What stands in front of an entry, and the least that is left for it.
constexpr std::size_t kBeforeInAgenda = 15;
constexpr std::size_t kBeforeInWeek = 21;
constexpr std::size_t kNarrowest = 20;

struct Appointments {
  std::vector<Appointment> all;
  std::vector<std::uint32_t> oids;  // of each
};

Appointments ReadAppointments(Session& session) {
  Appointments read;
  ForEachRecord<Appointment>(session, [&](std::int64_t oid, const Appointment& appointment) {
    read.all.push_back(appointment);
    read.oids.push_back(static_cast<std::uint32_t>(oid));
  });
  return read;
}

void ForEachPart(const std::vector<Appointment>& appointments, const DayRange& days,
                 const std::function<void(const DayRange& part, const Placed& placed)>& visit) {
  for (local_days first = days.first; first <= days.last; first += kAtATime) {
    const DayRange part{first, std::min(days.last, first + kAtATime - std::chrono::days(1))};
    visit(part, page::OccurrencesIn(appointments, part));
  }
}

// Those that are not in an earlier part, too.
template <typename Visit>
void ForEachNew(const Placed& placed, const DayRange& part, const DayRange& days, Visit visit) {
  for (const PlacedOccurrence& each : placed)
    if (part.first == days.first || each.days().first >= part.first) visit(each);
}

std::string EntryText(const DayEntry& entry, std::size_t before, const Report& report) {
  const std::size_t width = std::max(report.columns, before + kNarrowest) - before;
  const std::string text = Column(entry.subject + entry.more, width);
  return text.substr(0, text.find_last_not_of(' ') + 1);
}

std::string WordsFor(const DayRange& days) {
  return fmt::format("from {} to {}", formats::IsoDate(days.first), formats::IsoDate(days.last));
}

void SayNothing(const std::vector<Appointment>& appointments, const DayRange& days,
                const Report& report) {
  const page::NearestDays nearest = page::NearestTo(appointments, days);
  std::string words = "nothing " + WordsFor(days);
  if (nearest.before) words += "; before that on " + formats::IsoDate(*nearest.before);
  if (nearest.behind) words += "; after that on " + formats::IsoDate(*nearest.behind);
  fmt::print(report.out, "{}\n", words);
}

// Without a day, which only a list of the appointments shows.
void SayUndated(const std::vector<Appointment>& appointments, const Report& report) {
  const auto count = static_cast<std::size_t>(std::ranges::count_if(
      appointments, [](const Appointment& each) { return !each.start.has_value(); }));
  if (count > 0)
    fmt::print(report.out, "{} without a day: --list shows {}\n", Counted(count, "appointment"),
               count == 1 ? "it" : "them");
}

void PrintAgenda(const std::vector<Appointment>& appointments, const DayRange& days,
                 local_days today, const Report& report) {
  std::size_t count = 0;
  ForEachPart(appointments, days, [&](const DayRange& part, const Placed& placed) {
    ForEachNew(placed, part, days, [&](const PlacedOccurrence&) { ++count; });
    for (local_days day = part.first; day <= part.last; day += std::chrono::days(1)) {
      const std::vector<DayEntry> entries = EntriesOn(day, placed);
      if (entries.empty()) continue;
      fmt::print(report.out, "{}\n",
                 Heading(LongDay(day) + (day == today ? ", today" : ""), report));
      for (const DayEntry& entry : entries)
        fmt::print(report.out, "  {}  {}\n", Column(entry.times, 11),
                   EntryText(entry, kBeforeInAgenda, report));
      fmt::print(report.out, "\n");
    }
  });
  if (count == 0) {
    SayNothing(appointments, days, report);
  } else {
    fmt::print(report.out, "{} {} {}\n", count, count == 1 ? "entry" : "entries", WordsFor(days));
  }
}

// Every day, also one with nothing.
void PrintWeek(const std::vector<Appointment>& appointments, const DayRange& days, local_days today,
               const Report& report) {
  const Placed placed = page::OccurrencesIn(appointments, days);
  fmt::print(report.out, "{}\n\n",
             Heading(fmt::format("Week {}, {}", IsoWeek(days.first), WordsFor(days)), report));
  for (local_days day = days.first; day <= days.last; day += std::chrono::days(1)) {
    const std::chrono::year_month_day date(day);
    std::string head = fmt::format("{} {:>2}{}", WeekdayName(day).substr(0, 3),
                                   static_cast<unsigned>(date.day()), day == today ? "*" : "");
    const std::vector<DayEntry> entries = EntriesOn(day, placed);
    if (entries.empty()) fmt::print(report.out, "{}\n", head);
    for (const DayEntry& entry : entries) {
      fmt::print(report.out, "{:<7} {}  {}\n", head, Column(entry.times, 11),
                 EntryText(entry, kBeforeInWeek, report));
      head.clear();
    }
  }
}

// Alone, and where it stands.
Appointment AppointmentOf(const PlacedOccurrence& placed) {
  Appointment alone;
  static_cast<formats::Occurrence&>(alone) = *placed.said;
  alone.categories = placed.whole->categories;
  alone.isPrivate = placed.whole->isPrivate;
  alone.reminderMinutes = placed.whole->reminderMinutes;
  alone.start = placed.start;
  alone.end = placed.end;
  return alone;
}

void PrintOccurrences(const Appointments& appointments, const DayRange& days,
                      const Report& report) {
  ForEachPart(appointments.all, days, [&](const DayRange& part, const Placed& placed) {
    ForEachNew(placed, part, days, [&](const PlacedOccurrence& each) {
      const auto place = static_cast<std::size_t>(each.whole - appointments.all.data());
      fmt::print(report.out, "{}\n",
                 formats::AppointmentToJson(AppointmentOf(each), appointments.oids[place]));
    });
  });
}

}  // namespace

Outcome ShowCalendar(Session& session, const CalendarChoice& choice, bool json,
                     const Report& report) {
  const local_days today = formats::DayOf(LocalNow(session.Zone()));
  const CalendarWindow window = WindowOf(choice, today);
  const Appointments appointments = ReadAppointments(session);
  if (json) {
    PrintOccurrences(appointments, window.days, report);
    return Outcome::kDone;
  }
  if (window.form == CalendarForm::kMonth) {
    fmt::print(
        report.out, "{}",
        MonthGrid(window.days, page::OccurrencesIn(appointments.all, window.days), today, report));
  } else if (window.form == CalendarForm::kWeek) {
    PrintWeek(appointments.all, window.days, today, report);
  } else {
    PrintAgenda(appointments.all, window.days, today, report);
  }
  SayUndated(appointments.all, report);
  return Outcome::kDone;
}

}  // namespace tool
