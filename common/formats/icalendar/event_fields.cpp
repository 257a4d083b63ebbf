#include "common/formats/icalendar/event_fields.h"

#include <utility>

namespace formats {
namespace {

using std::chrono::days;

std::optional<int> ReminderOf(const Event& event, const Times& times, const ZoneTable& zones) {
  if (!event.alarm) return std::nullopt;
  const Alarm& alarm = *event.alarm;
  if (alarm.after) {
    const std::chrono::seconds length = alarm.ofEnd ? times.end - times.start : days(0);
    return MinutesBefore(length + alarm.after->total());
  }
  // A time without a zone is on the event's own clock.
  const Moment& start = *event.start;
  if (alarm.at->isUtc && !start.isFloating) {
    const sys_seconds at(alarm.at->time.time_since_epoch());
    return MinutesBefore(at - start.clock->ToUtc(start.wall));
  }
  local_seconds at = alarm.at->time;
  if (alarm.at->isUtc) at = zones.own()->ToLocal(sys_seconds(at.time_since_epoch()));
  return MinutesBefore(at - start.wall);
}

}  // namespace

bool AreKeepable(const Times& times) {
  return IsKeepableDay(DayOf(times.start)) && times.end <= calendar::kLastDay + days(1);
}

Appointment AppointmentAt(const Event& event, const Times& times, std::string uid,
                          const ZoneTable& zones) {
  Appointment appointment = event.fields;
  appointment.uid = std::move(uid);
  appointment.allDay = event.start->isDate;
  appointment.start = times.start;
  appointment.end = times.end;
  appointment.reminderMinutes = ReminderOf(event, times, zones);
  return appointment;
}

Occurrence OccurrenceOf(const Event& change, const Event& series, const Times& regular,
                        const ZoneTable& zones) {
  Occurrence occurrence = change.hasSummary ? change.fields : series.fields;
  if (!change.hasSummary) {
    if (!change.fields.location.empty()) occurrence.location = change.fields.location;
    if (!change.fields.body.empty()) occurrence.body = change.fields.body;
  }
  const bool hasStart = change.start.has_value();
  const bool hasLength = change.end || change.duration || change.hasSummary;
  occurrence.allDay = hasStart ? change.start->isDate : series.start->isDate;
  Times times = hasStart ? TimesOf(change, zones) : regular;
  if (hasStart && !hasLength && occurrence.allDay == series.start->isDate) {
    times.end = times.start + (regular.end - regular.start);
  }
  occurrence.start = times.start;
  occurrence.end = times.end;
  return occurrence;
}

void NoticeUnkeptChanges(Event& change, const Event& series, const ZoneTable& zones) {
  if (!change.hasSummary) return;
  const auto report = [&](const char* name, const char* what) {
    change.notices.Add(change.line, std::string(name) + ": an occurrence has " + what);
  };
  const std::vector<std::string>& categories = change.fields.categories;
  if (!categories.empty() && categories != series.fields.categories) {
    report("CATEGORIES", "the categories of its series");
  }
  if (change.fields.isPrivate && !series.fields.isPrivate) report("CLASS", "that of its series");
  if (!change.start) return;
  const auto reminder = ReminderOf(change, TimesOf(change, zones), zones);
  if (reminder && reminder != ReminderOf(series, TimesOf(series, zones), zones)) {
    report("VALARM", "the reminder of its series");
  }
}

std::string UidOfOccurrence(const std::string& uid, local_seconds wall, bool isDate) {
  if (uid.empty()) return {};
  return uid + "/" + (isDate ? BasicDate(DayOf(wall)) : BasicDateTime(wall));
}

}  // namespace formats
