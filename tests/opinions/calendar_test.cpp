// Appointments as python-icalendar reads the calendars that we write.
//
// It undoes escapes one kind after the other, and twice, so that a backslash before a letter or a
// sign that can be escaped takes it along: here it stands before others alone. A line break is one
// of a kind to it.
#include <gtest/gtest.h>
#include <rapidcheck/gtest.h>

#include <algorithm>
#include <chrono>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "common/calendar/wall_time.h"
#include "common/formats/icalendar/icalendar.h"
#include "common/formats/icalendar/pattern_rule.h"
#include "tests/common/calendar/calendar_support.h"
#include "tests/opinions/any_text.h"
#include "tests/opinions/opinion.h"

namespace corvane::testing {
namespace {

using formats::Appointment;
using formats::local_days;
using formats::local_seconds;
using formats::Occurrence;
using nlohmann::json;
using std::chrono::days;

std::string AnyWords() {
  const std::string any = AnyText();
  std::string text;
  for (std::size_t i = 0; i < any.size(); ++i) {
    const bool escapes = i + 1 < any.size() &&
                         std::string_view("nN,;:\\\r\n").find(any[i + 1]) != std::string_view::npos;
    if (any[i] != '\\' || !escapes) text += any[i];
  }
  return text;
}

Occurrence AnyOccurrence(local_days day, bool allDay) {
  Occurrence occurrence;
  occurrence.subject = AnyWords();
  occurrence.location = AnyWords();
  occurrence.body = AnyWords();
  occurrence.allDay = allDay;
  occurrence.start = day;
  if (allDay) {
    occurrence.end = day + days(*rc::gen::inRange(1, 4));
  } else {
    *occurrence.start += std::chrono::minutes(*rc::gen::inRange(4 * 60, 23 * 60));
    occurrence.end = *occurrence.start + std::chrono::minutes(*rc::gen::element(0, 1, 45, 3000));
  }
  return occurrence;
}

Appointment AnyAppointment() {
  Appointment appointment;
  const local_days day = *calendar::testing::AnyDay(1975, 2034);
  const bool allDay = *rc::gen::arbitrary<bool>();
  static_cast<Occurrence&>(appointment) = AnyOccurrence(day, allDay);
  appointment.uid = "u" + AnyWords();
  appointment.isPrivate = *rc::gen::arbitrary<bool>();
  for (int i = *rc::gen::inRange(0, 3); i > 0; --i) {
    std::string name = AnyWords() + std::to_string(i);
    std::erase(name, ',');
    appointment.categories.push_back(name);
  }
  if (*rc::gen::inRange(0, 3) == 0) return appointment;
  // One that the day implies is one of its days.
  const calendar::Pattern any = *calendar::testing::AnyEndlessPattern();
  calendar::Pattern pattern = calendar::PatternFrom(any.type, day);
  pattern.interval = any.interval;
  if (*rc::gen::arbitrary<bool>()) pattern.occurrences = *rc::gen::inRange(1, 50);
  if (!pattern.occurrences && *rc::gen::arbitrary<bool>()) {
    pattern.until = day + days(*rc::gen::inRange(0, 600));
  }
  appointment.series.emplace(formats::Series{pattern, {}, {}});
  for (const local_days each : calendar::testing::ToldDays(pattern, day, 20)) {
    const int fate = *rc::gen::inRange(0, 10);
    if (fate == 0) appointment.series->deleted.push_back(each);
    if (fate == 1) {
      appointment.series->changed.push_back({each, AnyOccurrence(each + days(1), allDay)});
    }
  }
  return appointment;
}

std::string TimeText(local_seconds time, bool allDay) {
  return allDay ? formats::IsoDate(formats::DayOf(time)) : formats::IsoDateTime(time);
}

json EventOf(const Appointment& series, const Occurrence& occurrence) {
  json event = {{"UID", PlainText(series.uid)},
                {"DTSTART", TimeText(*occurrence.start, occurrence.allDay)}};
  if (occurrence.end != occurrence.start) {
    event["DTEND"] = TimeText(*occurrence.end, occurrence.allDay);
  }
  if (!occurrence.subject.empty()) event["SUMMARY"] = PlainText(occurrence.subject);
  if (!occurrence.location.empty()) event["LOCATION"] = PlainText(occurrence.location);
  if (!occurrence.body.empty()) event["DESCRIPTION"] = PlainText(occurrence.body);
  if (series.isPrivate) event["CLASS"] = "PRIVATE";
  for (const std::string& name : series.categories) event["CATEGORIES"].push_back(PlainText(name));
  return event;
}

// The parts of the rule, sorted.
json PartsOfRule(const Appointment& appointment, const calendar::Zone& zone) {
  const calendar::Pattern& pattern = appointment.series->pattern;
  std::string rule = formats::RuleOf(pattern);
  const local_days first = formats::DayOf(*appointment.start);
  if (pattern.until) {
    const local_seconds last = *pattern.until + (*appointment.start - first);
    rule += ";UNTIL=" + (appointment.allDay ? formats::BasicDate(*pattern.until)
                                            : formats::BasicUtc(zone.ToUtc(last)));
  }
  std::vector<std::string> parts(1);
  for (const char c : rule) {
    if (c == ';') {
      parts.emplace_back();
    } else {
      parts.back() += c;
    }
  }
  std::sort(parts.begin(), parts.end());
  return parts;
}

json Expected(const Appointment& appointment, const calendar::Zone& zone) {
  json events = json::array();
  json first = EventOf(appointment, appointment);
  if (appointment.series) {
    const auto clock = *appointment.start - formats::DayOf(*appointment.start);
    first["RRULE"] = PartsOfRule(appointment, zone);
    for (const local_days day : appointment.series->deleted) {
      first["EXDATE"].push_back(TimeText(day + clock, appointment.allDay));
    }
    events.push_back(std::move(first));
    for (const formats::ChangedOccurrence& change : appointment.series->changed) {
      json event = EventOf(appointment, change.occurrence);
      event["RECURRENCE-ID"] = TimeText(change.original + clock, appointment.allDay);
      // It has a subject of its own, be it none.
      if (!event.contains("SUMMARY")) event["SUMMARY"] = "";
      events.push_back(std::move(event));
    }
  } else {
    events.push_back(std::move(first));
  }
  return events;
}

RC_GTEST_PROP(Calendar, IsTheAppointmentToIcalendar, ()) {
  static Opinion icalendar("calendar.py");
  const Appointment appointment = AnyAppointment();
  const auto zone = *calendar::Zone::Find(*rc::gen::element<std::string>(
      "UTC", "Europe/Berlin", "America/New_York", "Australia/Sydney", "Asia/Kolkata"));
  const formats::CalendarText text = formats::WriteICalendar({&appointment, 1}, {}, zone);
  RC_LOG() << text.bytes;
  RC_ASSERT(text.losses.empty());
  const json found = icalendar.Ask({{"calendar", text.bytes}});
  const json expected = Expected(appointment, zone);
  RC_LOG() << "found    " << found.dump() << "\nexpected " << expected.dump() << "\n";
  const bool same = found == expected;
  RC_ASSERT(same);
}

}  // namespace
}  // namespace corvane::testing
