#include "handheld/store/item_check.h"

#include <cstdio>
#include <span>
#include <utility>

#include "common/text/unicode.h"

namespace ce::host {
namespace {

std::string DayText(local_days day) {
  const std::chrono::year_month_day date{day};
  char text[40];
  std::snprintf(text, sizeof(text), "%04d-%02u-%02u", static_cast<int>(date.year()),
                static_cast<unsigned>(date.month()), static_cast<unsigned>(date.day()));
  return text;
}

// Whether Duration is what lies between Start and End.
bool TimesAgree(const AppointmentFields& fields) {
  if (fields.duration < 0) return false;
  AppointmentFields set;
  set.start = fields.start;
  set.duration = fields.duration;
  return !TimeOfDate(fields.start) || !TimeOfDate(fields.end) ||
         (SetEnd(set, fields.end) && set.start == fields.start && set.duration == fields.duration);
}

}  // namespace

ItemCheck::ItemCheck(const ItemLimits& limits, std::function<void(std::string)> report)
    : limits_(limits), report_(std::move(report)) {}

void ItemCheck::Add(const std::string& name, const std::string& problem) const {
  report_(name + ": " + problem);
}

void ItemCheck::Date(const std::string& name, const char* property, DATE date) const {
  if (!IsItemDate(date)) Add(name, std::string(property) + " is not a possible date");
}

template <typename Kind>
void ItemCheck::Texts(const std::string& name, const Kind& fields) const {
  constexpr std::span<const TextRow> rows = ItemTable<Kind>::kTexts;
  for (std::size_t i = 0; i < rows.size(); ++i) {
    const std::string_view stored = fields.texts.View(i);
    const std::size_t limit = LongestText(limits_, rows[i].kind);
    if (!text::IsWtf8(stored)) Add(name, std::string(rows[i].name) + " is not text");
    if (text::Utf16Length(stored) > limit) {
      Add(name, std::string(rows[i].name) + " is longer than this handheld's " +
                    std::to_string(limit) + " characters");
    }
  }
}

void ItemCheck::Fields(const std::string& name, const AppointmentFields& fields) const {
  Date(name, "Start", fields.start);
  Date(name, "End", fields.end);
  if (!TimesAgree(fields)) Add(name, "Start, End and Duration do not agree");
  if (!IsSensitivity(fields.sensitivity)) Add(name, "Sensitivity has an unknown value");
  Texts(name, fields);
}

void ItemCheck::Recurrence(const std::string& name, const std::optional<Series>& series,
                           local_days start) const {
  if (!series) return;
  Series finished = *series;
  if (!FinishSeries(finished, start)) {
    Add(name, "its recurrence pattern is not a possible one");
  } else if (finished.until != series->until || finished.occurrences != series->occurrences) {
    Add(name, "its Occurrences and PatternEndDate do not agree");
  }
}

void ItemCheck::Check(const std::string& name, const ContactRow& contact) const {
  Date(name, "Birthday", contact.fields.birthday);
  Date(name, "Anniversary", contact.fields.anniversary);
  Texts(name, contact.fields);
}

void ItemCheck::Check(const std::string& name, const AppointmentRow& appointment) const {
  Fields(name, appointment.fields);
  Recurrence(name, appointment.series, FirstDay(appointment.fields, appointment.series));
}

void ItemCheck::Check(const std::string& name, const AppointmentRow& appointment,
                      const ExceptionRow& exception) const {
  const std::string line = name + ", exception of " + DayText(exception.originalDay);
  if (!HasDay(appointment, exception.originalDay)) Add(line, "its series has no such day");
  if (!exception.deleted) Fields(line, exception.fields);
}

void ItemCheck::Check(const std::string& name, const TaskRow& task) const {
  const TaskFields& fields = task.fields;
  Date(name, "StartDate", fields.startDate);
  Date(name, "DueDate", fields.dueDate);
  Date(name, "DateCompleted", fields.dateCompleted);
  if (!IsReminderDate(fields.reminderTime)) Add(name, "ReminderTime is not a possible date");
  if (!IsSensitivity(fields.sensitivity)) Add(name, "Sensitivity has an unknown value");
  if (!IsImportance(fields.importance)) Add(name, "Importance has an unknown value");
  Texts(name, fields);
  Recurrence(name, task.series, FirstDay(fields, task.series));
}

}  // namespace ce::host
