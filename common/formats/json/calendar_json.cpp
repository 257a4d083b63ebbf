#include "common/formats/json/calendar_json.h"

#include <nlohmann/json.hpp>

#include "common/calendar/wall_time.h"

namespace formats {
namespace {

using Json = nlohmann::ordered_json;

void PutText(Json& object, const char* name, const std::string& text) {
  if (!text.empty()) object[name] = text;
}

void PutNumber(Json& object, const char* name, int number) {
  if (number != 0) object[name] = number;
}

void PutDay(Json& object, const char* name, const std::optional<local_days>& day) {
  if (day) object[name] = IsoDate(*day);
}

void PutTime(Json& object, const char* name, const std::optional<local_seconds>& time) {
  if (time) object[name] = IsoDateTime(*time);
}

// The days that an all-day occurrence covers, if its times are midnights as they are to be.
bool CoversDays(const Occurrence& occurrence) {
  const auto isMidnight = [](local_seconds time) { return time == DayOf(time); };
  return occurrence.allDay && occurrence.start && occurrence.end && isMidnight(*occurrence.start) &&
         isMidnight(*occurrence.end) && *occurrence.end > *occurrence.start;
}

void PutOccurrence(Json& object, const Occurrence& occurrence) {
  PutText(object, "Subject", occurrence.subject);
  PutText(object, "Location", occurrence.location);
  if (occurrence.allDay) object["AllDayEvent"] = true;
  if (CoversDays(occurrence)) {
    PutDay(object, "Start", DayOf(*occurrence.start));
    PutDay(object, "End", DayOf(*occurrence.end) - std::chrono::days(1));
  } else {
    PutTime(object, "Start", occurrence.start);
    PutTime(object, "End", occurrence.end);
  }
  object["BusyStatus"] = occurrence.busyStatus;
  PutText(object, "Body", occurrence.body);
}

Json PatternObject(const calendar::Pattern& pattern) {
  Json object;
  object["RecurrenceType"] = static_cast<int>(pattern.type);
  object["Interval"] = pattern.interval;
  PutNumber(object, "DayOfWeekMask", pattern.daysOfWeek);
  PutNumber(object, "DayOfMonth", pattern.dayOfMonth);
  PutNumber(object, "Instance", pattern.instance);
  PutNumber(object, "MonthOfYear", pattern.monthOfYear);
  if (!pattern.occurrences && !pattern.until) object["NoEndDate"] = true;
  if (pattern.occurrences) object["Occurrences"] = *pattern.occurrences;
  PutDay(object, "PatternEndDate", pattern.until);
  return object;
}

Json SeriesObject(const Series& series) {
  Json object = PatternObject(series.pattern);
  for (const local_days day : series.deleted) object["deleted"].push_back(IsoDate(day));
  for (const ChangedOccurrence& change : series.changed) {
    Json changed;
    PutDay(changed, "OriginalDate", change.original);
    PutOccurrence(changed, change.occurrence);
    object["changed"].push_back(std::move(changed));
  }
  return object;
}

std::string OnOneLine(const Json& object) {
  return object.dump(-1, ' ', false, Json::error_handler_t::replace);
}

}  // namespace

std::string AppointmentToJson(const Appointment& appointment, std::uint32_t oid) {
  Json object;
  object["oid"] = oid;
  PutText(object, "uid", appointment.uid);
  PutOccurrence(object, appointment);
  if (appointment.reminderMinutes) {
    object["ReminderSet"] = true;
    object["ReminderMinutesBeforeStart"] = *appointment.reminderMinutes;
  }
  if (appointment.isPrivate) object["Sensitivity"] = 2;
  if (!appointment.categories.empty()) object["categories"] = appointment.categories;
  if (appointment.series) object["recurrence"] = SeriesObject(*appointment.series);
  return OnOneLine(object);
}

std::string TaskToJson(const Task& task, std::uint32_t oid) {
  Json object;
  object["oid"] = oid;
  PutText(object, "uid", task.uid);
  PutText(object, "Subject", task.subject);
  PutDay(object, "StartDate", task.start);
  PutDay(object, "DueDate", task.due);
  if (task.complete) object["Complete"] = true;
  PutDay(object, "DateCompleted", task.completed);
  object["Importance"] = static_cast<int>(task.importance);
  if (task.reminder) object["ReminderSet"] = true;
  PutTime(object, "ReminderTime", task.reminder);
  if (task.isPrivate) object["Sensitivity"] = 2;
  PutText(object, "Body", task.body);
  if (!task.categories.empty()) object["categories"] = task.categories;
  if (task.pattern) object["recurrence"] = PatternObject(*task.pattern);
  return OnOneLine(object);
}

}  // namespace formats
