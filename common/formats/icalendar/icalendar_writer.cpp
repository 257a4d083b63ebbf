#include <fmt/format.h>

#include <algorithm>
#include <optional>
#include <string>
#include <utility>

#include "common/calendar/wall_time.h"
#include "common/formats/icalendar/icalendar.h"
#include "common/formats/icalendar/icalendar_properties.h"
#include "common/formats/icalendar/pattern_rule.h"
#include "common/formats/icalendar/vtimezone_writer.h"
#include "common/formats/lines/content_writer.h"

namespace formats {
namespace {

using std::chrono::days;
using std::chrono::seconds;

// The same items give the same bytes, so the stamp that every item must have says nothing.
constexpr std::string_view kStamp = "DTSTAMP:19700101T000000Z";

std::string BusyWord(int status) {
  const bool known = status >= 0 && status < static_cast<int>(std::size(kBusyWords));
  return known ? std::string(kBusyWords[status]) : std::to_string(status);
}

// Start and end as an event has them.
struct EventTimes {
  bool allDay = false;
  local_seconds start = {};
  local_seconds end = {};
};

// An appointment's series, beginning with its first day.
struct WrittenSeries {
  calendar::Pattern lookup;  // its days, its end a day
  local_days firstDay = {};
};

class CalendarWriter {
 public:
  explicit CalendarWriter(const calendar::Zone& zone) : zone_(zone) {}
  void Add(const Appointment& appointment);
  void Add(const Task& task);
  CalendarText Finish();

 private:
  void Line(std::string_view line) { AppendFolded(items_, line); }
  void TextLine(std::string name, std::string_view text);
  void TimeLine(const std::string& name, local_seconds time, bool isDate);
  void Lose(std::string_view why) { losses_.push_back(name_ + ": " + std::string(why)); }
  void Use(local_seconds time);

  std::optional<EventTimes> TimesOf(const Occurrence& occurrence);
  std::optional<WrittenSeries> FirstDayOf(const calendar::Pattern& pattern, local_days start) const;
  void Event(const Appointment& series, const Occurrence& occurrence, const EventTimes& times,
             std::optional<local_seconds> original = std::nullopt,
             const WrittenSeries* written = nullptr);
  void Rule(const calendar::Pattern& pattern, const EventTimes& first);
  void Recurrence(const Series& series, const EventTimes& first, const WrittenSeries& written);
  void Changes(const Appointment& appointment, const EventTimes& first,
               const WrittenSeries& series);
  void BusyLines(int status);
  void CategoryLines(const std::vector<std::string>& names);
  void Alarm(const std::string& trigger);
  void TaskDays(const Task& task);

  const calendar::Zone& zone_;
  std::string items_;
  std::vector<std::string> losses_;
  std::string name_;  // of the item that is being written
  std::optional<UsedTimes> used_;
};

void CalendarWriter::TextLine(std::string name, std::string_view text) {
  ContentValue value;
  value.Add(text);
  name += value.LineBreakParameter();
  name += ':';
  Line(name + value.text());
}

void CalendarWriter::Use(local_seconds time) {
  if (!used_) used_ = UsedTimes{time, time, false};
  used_->first = std::min(used_->first, time);
  used_->last = std::max(used_->last, time);
}

void CalendarWriter::TimeLine(const std::string& name, local_seconds time, bool isDate) {
  if (isDate) return Line(name + ";VALUE=DATE:" + BasicDate(DayOf(time)));
  if (zone_.name() == "UTC") return Line(name + ":" + BasicDateTime(time) + "Z");
  Use(time);
  Line(name + ";TZID=" + zone_.name() + ":" + BasicDateTime(time));
}

// An odd appointment's become those of the nearest event.
std::optional<EventTimes> CalendarWriter::TimesOf(const Occurrence& occurrence) {
  if (!occurrence.start) return std::nullopt;
  EventTimes times{occurrence.allDay, *occurrence.start,
                   occurrence.end.value_or(*occurrence.start)};
  if (!occurrence.end) Lose("it has no end, which is written as its start");
  if (times.end < times.start) {
    Lose("it ends before it starts, its start is written as its end");
    times.end = times.start;
  }
  if (!times.allDay) return times;
  times.start = DayOf(times.start);
  times.end = std::max<local_seconds>(std::chrono::ceil<days>(times.end), times.start + days(1));
  if (times.start != *occurrence.start || times.end != occurrence.end) {
    Lose("it is for whole days but has other times, the days are written");
  }
  return times;
}

std::optional<WrittenSeries> CalendarWriter::FirstDayOf(const calendar::Pattern& pattern,
                                                        local_days start) const {
  if (!calendar::IsValid(pattern)) return std::nullopt;
  const std::optional<local_days> first = calendar::NextDayOf(pattern, start, start);
  if (!first) return std::nullopt;
  WrittenSeries series{pattern, *first};
  if (pattern.occurrences) {
    series.lookup.occurrences.reset();
    series.lookup.until = calendar::LastDayOf(pattern, start);
  }
  return series;
}

void CalendarWriter::Add(const Appointment& appointment) {
  name_ = DisplayName(appointment);
  std::optional<EventTimes> times = TimesOf(appointment);
  if (!times) return Lose("an event needs a start, left out");
  if (!appointment.series) return Event(appointment, appointment, *times);
  const std::optional<WrittenSeries> series =
      FirstDayOf(appointment.series->pattern, DayOf(times->start));
  if (!series) return Lose("its series has no day, left out");
  const days later = series->firstDay - DayOf(times->start);
  times->start += later;
  times->end += later;
  Event(appointment, appointment, *times, std::nullopt, &*series);
  Changes(appointment, *times, *series);
}

void CalendarWriter::Rule(const calendar::Pattern& pattern, const EventTimes& first) {
  std::string rule = "RRULE:" + RuleOf(pattern);
  if (pattern.until) {
    const local_seconds last = *pattern.until + (first.start - DayOf(first.start));
    rule += ";UNTIL=";
    rule += first.allDay ? BasicDate(*pattern.until) : BasicUtc(zone_.ToUtc(last));
  }
  Line(rule);
}

void CalendarWriter::Recurrence(const Series& series, const EventTimes& first,
                                const WrittenSeries& written) {
  Rule(series.pattern, first);
  const seconds clock = first.start - DayOf(first.start);
  for (const local_days day : series.deleted) {
    if (calendar::IsDayOf(written.lookup, written.firstDay, day)) {
      TimeLine("EXDATE", day + clock, first.allDay);
    } else {
      Lose("it has no occurrence on " + IsoDate(day) + " to be deleted");
    }
  }
  if (first.allDay || !used_) return;
  if (written.lookup.until) {
    Use(*written.lookup.until + clock);
  } else {
    used_->goesOn = true;
  }
}

void CalendarWriter::Changes(const Appointment& appointment, const EventTimes& first,
                             const WrittenSeries& series) {
  const seconds clock = first.start - DayOf(first.start);
  for (const ChangedOccurrence& change : appointment.series->changed) {
    if (!calendar::IsDayOf(series.lookup, series.firstDay, change.original)) {
      Lose("it has no occurrence on " + IsoDate(change.original) + " to be changed");
      continue;
    }
    const std::optional<EventTimes> times = TimesOf(change.occurrence);
    if (!times) {
      Lose("its occurrence of " + IsoDate(change.original) + " needs a start, not changed");
      continue;
    }
    const local_seconds original = change.original + clock;
    Event(appointment, change.occurrence, *times, original);
  }
}

void CalendarWriter::Event(const Appointment& series, const Occurrence& occurrence,
                           const EventTimes& times, std::optional<local_seconds> original,
                           const WrittenSeries* written) {
  Line("BEGIN:VEVENT");
  TextLine("UID", series.uid);
  Line(kStamp);
  if (original) TimeLine("RECURRENCE-ID", *original, series.allDay);
  TimeLine("DTSTART", times.start, times.allDay);
  // One that ends where it starts has no DTEND.
  if (times.end != times.start) TimeLine("DTEND", times.end, times.allDay);
  if (written != nullptr) Recurrence(*series.series, times, *written);
  if (original || !occurrence.subject.empty()) TextLine("SUMMARY", occurrence.subject);
  if (!occurrence.location.empty()) TextLine("LOCATION", occurrence.location);
  if (!occurrence.body.empty()) TextLine("DESCRIPTION", occurrence.body);
  CategoryLines(series.categories);
  if (series.isPrivate) Line("CLASS:PRIVATE");
  BusyLines(occurrence.busyStatus);
  if (series.reminderMinutes) {
    const long long minutes = *series.reminderMinutes;
    Alarm(fmt::format("TRIGGER:{}PT{}M", minutes > 0 ? "-" : "", std::abs(minutes)));
  }
  Line("END:VEVENT");
}

void CalendarWriter::BusyLines(int status) {
  const bool free = status == static_cast<int>(BusyStatus::kFree);
  if (status == static_cast<int>(BusyStatus::kTentative)) Line("STATUS:TENTATIVE");
  Line(free ? "TRANSP:TRANSPARENT" : "TRANSP:OPAQUE");
  Line("X-MICROSOFT-CDO-BUSYSTATUS:" + BusyWord(status));
}

void CalendarWriter::CategoryLines(const std::vector<std::string>& names) {
  for (const ContentValue& value : CategoryValues(names)) {
    Line("CATEGORIES" + value.LineBreakParameter() + ":" + value.text());
  }
}

void CalendarWriter::Alarm(const std::string& trigger) {
  Line("BEGIN:VALARM");
  Line("ACTION:DISPLAY");
  Line("DESCRIPTION:Reminder");
  Line(trigger);
  Line("END:VALARM");
}

void CalendarWriter::TaskDays(const Task& task) {
  std::optional<local_days> start = task.start;
  std::optional<local_days> due = task.due;
  std::optional<WrittenSeries> series;
  if (task.pattern) {
    const std::optional<local_days> begin = start ? start : due;
    if (begin) series = FirstDayOf(*task.pattern, *begin);
    if (series) {
      const days later = series->firstDay - *begin;
      if (start) *start += later;
      if (due) *due += later;
    } else {
      Lose("its series has no day, written without it");
    }
  }
  if (start) TimeLine("DTSTART", *start, true);
  if (due) TimeLine("DUE", *due, true);
  if (series) Rule(*task.pattern, {true, series->firstDay, series->firstDay});
}

void CalendarWriter::Add(const Task& task) {
  name_ = DisplayName(task);
  Line("BEGIN:VTODO");
  TextLine("UID", task.uid);
  Line(kStamp);
  if (!task.subject.empty()) TextLine("SUMMARY", task.subject);
  TaskDays(task);
  if (!task.body.empty()) TextLine("DESCRIPTION", task.body);
  CategoryLines(task.categories);
  if (task.isPrivate) Line("CLASS:PRIVATE");
  if (task.importance == Importance::kHigh) Line("PRIORITY:1");
  if (task.importance == Importance::kLow) Line("PRIORITY:9");
  Line(task.complete ? "STATUS:COMPLETED" : "STATUS:NEEDS-ACTION");
  if (task.complete && task.completed) {
    // At noon, so that neighbours see the same day.
    Line("COMPLETED:" + BasicUtc(zone_.ToUtc(*task.completed + std::chrono::hours(12))));
  }
  if (task.reminder) {
    Alarm("TRIGGER;VALUE=DATE-TIME:" + BasicUtc(zone_.ToUtc(*task.reminder)));
  }
  Line("END:VTODO");
}

CalendarText CalendarWriter::Finish() {
  CalendarText text;
  text.bytes = "BEGIN:VCALENDAR\r\nVERSION:2.0\r\nPRODID:-//Corvane//Calendar//EN\r\n";
  if (used_) text.bytes += VTimezoneOf(zone_, *used_);
  text.bytes += items_;
  text.bytes += "END:VCALENDAR\r\n";
  text.losses = std::move(losses_);
  return text;
}

}  // namespace

CalendarText WriteICalendar(std::span<const Appointment> appointments, std::span<const Task> tasks,
                            const calendar::Zone& zone) {
  CalendarWriter writer(zone);
  for (const Appointment& appointment : appointments) writer.Add(appointment);
  for (const Task& task : tasks) writer.Add(task);
  return writer.Finish();
}

}  // namespace formats
