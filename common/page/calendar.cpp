#include "common/page/calendar.h"

#include <algorithm>
#include <chrono>

#include "common/calendar/pattern_words.h"
#include "common/calendar/wall_time.h"

namespace page {
namespace {

using formats::Appointment;
using formats::local_days;
using formats::Occurrence;

std::int64_t Number(local_days day) {
  return day.time_since_epoch().count();
}

std::int64_t MinutesBetween(formats::local_seconds from, formats::local_seconds to) {
  return std::chrono::floor<std::chrono::minutes>(to - from).count();
}

// What the page cannot place on a day has none.
void AddTimes(Json& event, const Occurrence& occurrence) {
  if (!occurrence.start) return;
  const auto start = *occurrence.start;
  const auto end = occurrence.end.value_or(start);
  if (occurrence.allDay) {
    event["length"] =
        std::max<std::int64_t>(1, Number(formats::DayOf(end)) - Number(formats::DayOf(start)));
    return;
  }
  event["minute"] = MinutesBetween(formats::DayOf(start), start);
  event["length"] = std::max<std::int64_t>(0, MinutesBetween(start, end));
}

Json EventOf(const Occurrence& occurrence, const Appointment& whole) {
  Json event = Json::object();
  AddText(event, "subject", occurrence.subject);
  AddText(event, "place", occurrence.location);
  AddText(event, "note", occurrence.body);
  AddTexts(event, "categories", whole.categories);
  AddFlag(event, "private", whole.isPrivate);
  if (whole.reminderMinutes) event["reminder"] = *whole.reminderMinutes;
  event["busy"] = occurrence.busyStatus;
  AddTimes(event, occurrence);
  return event;
}

class EventList {
 public:
  EventList(const DayRange& range, std::size_t seriesCount)
      : range_(range),
        most_(std::clamp(kMostDaysOfAll / std::max<std::size_t>(seriesCount, 1), kFewestDays,
                         kMostDays)) {}

  void Add(const Appointment& appointment) {
    if (!appointment.series || !appointment.start) {
      Json event = EventOf(appointment, appointment);
      event["days"] = Json::array();
      if (appointment.start) event["days"].push_back(Number(formats::DayOf(*appointment.start)));
      events_.push_back(std::move(event));
    } else {
      AddSeries(appointment, *appointment.series);
    }
  }
  Json Take() { return std::move(events_); }

 private:
  void AddSeries(const Appointment& appointment, const formats::Series& series) {
    Json event = EventOf(appointment, appointment);
    event["repeats"] = PatternWords(series.pattern);
    event["days"] = Json::array();
    std::int64_t before = 0;
    const auto take = [&](local_days day) {
      event["days"].push_back(Number(day) - before);
      before = Number(day);
    };
    if (!calendar::IsValid(series.pattern)) {
      take(formats::DayOf(*appointment.start));
      events_.push_back(std::move(event));
      return;
    }
    const calendar::SeriesDays days(series.pattern, formats::DayOf(*appointment.start));
    const std::int64_t inRange = days.CountBefore(range_.last + std::chrono::days(1));
    const std::int64_t end = std::max(inRange, std::min<std::int64_t>(days.size(), 1));
    const std::int64_t begin = std::max<std::int64_t>(0, end - static_cast<std::int64_t>(most_));
    if (begin > 0) event["earlier"] = begin;
    std::vector<Json> changed;
    ForEachDay(series, days, begin, end,
               [&](local_days day, const formats::ChangedOccurrence* other) {
                 if (other) {
                   changed.push_back(ChangedEvent(appointment, *other));
                 } else {
                   take(day);
                 }
               });
    events_.push_back(std::move(event));
    std::ranges::move(changed, std::back_inserter(events_));
  }

  static Json ChangedEvent(const Appointment& whole, const formats::ChangedOccurrence& changed) {
    Json event = EventOf(changed.occurrence, whole);
    event["instead"] = Number(changed.original);
    const auto start = changed.occurrence.start;
    event["days"] = {Number(start ? formats::DayOf(*start) : changed.original)};
    return event;
  }

  const DayRange range_;
  const std::size_t most_;
  Json events_ = Json::array();
};

}  // namespace

DayRange RangeOf(const std::vector<Appointment>& appointments, local_days today) {
  const std::chrono::year_month_day date(today);
  const auto month = std::chrono::year_month(date.year() + std::chrono::years(2), date.month());
  const local_days last(month / std::chrono::last);
  DayRange range{today, last};
  for (const Appointment& appointment : appointments)
    if (appointment.start) range.first = std::min(range.first, formats::DayOf(*appointment.start));
  return range;
}

Json EventsOf(const std::vector<Appointment>& appointments, const DayRange& range) {
  const auto series = std::ranges::count_if(
      appointments, [](const Appointment& each) { return each.series.has_value(); });
  EventList events(range, static_cast<std::size_t>(series));
  for (const Appointment& appointment : appointments) events.Add(appointment);
  return events.Take();
}

Json TaskOf(const formats::Task& task) {
  Json json = Json::object();
  AddText(json, "subject", task.subject);
  AddText(json, "note", task.body);
  AddTexts(json, "categories", task.categories);
  AddFlag(json, "private", task.isPrivate);
  if (task.start) json["start"] = Number(*task.start);
  if (task.due) json["due"] = Number(*task.due);
  AddFlag(json, "done", task.complete);
  if (task.completed) json["completed"] = Number(*task.completed);
  json["importance"] = static_cast<int>(task.importance);
  if (task.reminder) json["reminder"] = task.reminder->time_since_epoch().count();
  if (task.pattern)
    json["repeats"] = calendar::IsValid(*task.pattern) ? PatternWords(*task.pattern) : "recurring";
  return json;
}

}  // namespace page
