#include "handheld/store/item_tables.h"

namespace ce::host {
namespace {

using std::chrono::minutes;
using std::chrono::seconds;

}  // namespace

seconds LengthOf(const AppointmentFields& fields) {
  const auto start = TimeOfDate(fields.start);
  const auto end = TimeOfDate(fields.end);
  if (start && end) return *end - *start;
  return minutes{fields.duration};
}

bool SetStart(AppointmentFields& fields, DATE start) {
  const auto time = TimeOfDate(start);
  if (!time) {
    if (start != kNoDate) return false;
    fields.start = kNoDate;
    return true;
  }
  if (fields.end != kNoDate) {
    const local_seconds end = *time + LengthOf(fields);
    if (!IsItemTime(end)) return false;
    fields.end = OleDate(end);
  }
  fields.start = OleDate(*time);
  return true;
}

bool SetEnd(AppointmentFields& fields, DATE end) {
  const auto time = TimeOfDate(end);
  if (!time) {
    if (end != kNoDate) return false;
    fields.end = kNoDate;
    return true;
  }
  if (const auto start = TimeOfDate(fields.start)) {
    if (*time < *start) {
      const local_seconds moved = *time - LengthOf(fields);
      if (!IsItemTime(moved)) return false;
      fields.start = OleDate(moved);
    } else {
      fields.duration = static_cast<LONG>(std::chrono::floor<minutes>(*time - *start).count());
    }
  }
  fields.end = OleDate(*time);
  return true;
}

bool SetDuration(AppointmentFields& fields, LONG duration) {
  if (duration < 0) return false;
  const auto start = TimeOfDate(fields.start);
  if (start && fields.end != kNoDate) {
    const local_seconds end = *start + minutes{duration};
    if (!IsItemTime(end)) return false;
    fields.end = OleDate(end);
  }
  fields.duration = duration;
  return true;
}

local_days FirstDay(const AppointmentFields& fields, const std::optional<Series>& series) {
  if (const auto start = DayOfDate(fields.start)) return *start;
  return series ? series->startDay : kFirstItemDay;
}

local_days FirstDay(const TaskFields& fields, const std::optional<Series>& series) {
  if (const auto start = DayOfDate(fields.startDate)) return *start;
  if (const auto due = DayOfDate(fields.dueDate)) return *due;
  return series ? series->startDay : kFirstItemDay;
}

}  // namespace ce::host
