#include <cmath>

#include "bench/floor/record_writer.h"
#include "bench/floor/store_values.h"

namespace floors {
namespace {

constexpr int kAppointmentColumns = 22;

constexpr char kInsertAppointment[] =
    "INSERT INTO appointments (oid, Start, \"End\", Duration, AllDayEvent, BusyStatus, Sensitivity,"
    " ReminderSet, ReminderMinutesBeforeStart, Subject, Location, Categories, Body, RecurrenceType,"
    " Interval, DayOfWeekMask, DayOfMonth, Instance, MonthOfYear, Occurrences, PatternEndDate,"
    " PatternStartDate) VALUES (?1, ?2, ?3, ?4, ?5, ?6, ?7, ?8, ?9, ?10, ?11, ?12, ?13, ?14, ?15,"
    " ?16, ?17, ?18, ?19, ?20, ?21, ?22)";
constexpr char kInsertException[] =
    "INSERT INTO exceptions (oid, OriginalDay, Deleted, Start, \"End\", Duration, AllDayEvent,"
    " BusyStatus, Sensitivity, ReminderSet, ReminderMinutesBeforeStart, Subject, Location,"
    " Categories, Body) VALUES (?1, ?2, ?3, ?4, ?5, ?6, ?7, ?8, ?9, ?10, ?11, ?12, ?13, ?14, ?15)";

// What an appointment and a changed occurrence have alike.
struct Fields {
  double start = kNoDate;
  double end = kNoDate;
  std::int64_t duration = 0;
  bool allDay = false;
  std::int64_t busyStatus = 0;
  std::int64_t sensitivity = 0;
  bool reminder = false;
  std::int64_t reminderMinutes = 0;
  std::string_view subject;
  std::string_view location;
  std::string_view categories;
  std::string_view body;

  // Whether the element is one of them.
  bool Take(std::string_view name, std::string_view text) {
    if (name == "SUBJECT") return subject = text, true;
    if (name == "LOCATION") return location = text, true;
    if (name == "EVENT_START") return start = DateOf(text), true;
    if (name == "EVENT_END") return end = DateOf(text), true;
    if (name == "BusyStatus") return busyStatus = NumberOf(text), true;
    if (name == "NOTES") return body = text, true;
    if (name == "ALL_DAY_EVENT") return allDay = text == "TRUE", true;
    if (name == "HAS_REMINDER") return reminder = text == "TRUE", true;
    if (name == "ReminderMinutes") return reminderMinutes = NumberOf(text), true;
    if (name == "Private") return sensitivity = text == "TRUE" ? kPrivate : 0, true;
    return false;
  }

  // Answers the parameter behind.
  int Bind(Query& insert, int parameter) const {
    insert.Bind(parameter++, start);
    insert.Bind(parameter++, end);
    for (const std::int64_t number : {duration, std::int64_t{allDay}, busyStatus, sensitivity,
                                      std::int64_t{reminder}, reminderMinutes})
      insert.Bind(parameter++, number);
    for (const std::string_view text : {subject, location, categories, body})
      insert.Bind(parameter++, text);
    return parameter;
  }

  void Measure() { duration = std::llround((end - start) * 1440); }
};

class AppointmentWriter final : public RecordWriter {
 public:
  explicit AppointmentWriter(const Database& store)
      : insert_(store, kInsertAppointment), insertException_(store, kInsertException) {}

  void Write(std::int64_t oid, const xmlNode* record) override {
    Fields fields;
    const xmlNode* recurrence = nullptr;
    categories_.clear();
    for (const xmlNode* child = record->children; child; child = child->next) {
      const std::string_view name = NameOf(child);
      if (fields.Take(name, TextOf(child))) continue;
      if (name == "CATEGORIES") JoinCategories(child, categories_);
      if (name == "RECURRENCE") recurrence = child;
    }
    fields.categories = categories_;
    fields.Measure();
    insert_.Bind(1, oid);
    BindSeries(fields.Bind(insert_, 2), recurrence, std::floor(fields.start));
    insert_.Run();
    if (recurrence) WriteExceptions(oid, recurrence, fields);
  }

 private:
  void BindSeries(int parameter, const xmlNode* recurrence, double firstDay) {
    if (!recurrence) {
      while (parameter <= kAppointmentColumns) insert_.BindNull(parameter++);
      return;
    }
    const xmlNode* weekday = Child(recurrence, "DAYS_OF_WEEK");
    const std::int64_t type = weekday ? kWeekly : kDaily;
    const std::int64_t mask = weekday ? std::int64_t{1} << NumberOf(TextOf(weekday)) : 0;
    const std::int64_t occurrences = NumberOf(TextOf(Child(recurrence, "Occurrences")));
    for (const std::int64_t number : {type, std::int64_t{1}, mask, std::int64_t{0}, std::int64_t{0},
                                      std::int64_t{0}, occurrences})
      insert_.Bind(parameter++, number);
    const double daysBetween = weekday ? 7 : 1;
    insert_.Bind(parameter++, firstDay + daysBetween * static_cast<double>(occurrences - 1));
    insert_.Bind(parameter, firstDay);
  }

  void WriteExceptions(std::int64_t oid, const xmlNode* recurrence, const Fields& series) {
    for (const xmlNode* child = recurrence->children; child; child = child->next) {
      if (NameOf(child) == "DeletedException") {
        WriteException(oid, DateOf(TextOf(child)), true, {});
      } else if (NameOf(child) == "ChangedException") {
        Fields changed = series;
        changed.location = {};
        changed.body = {};
        for (const xmlNode* field = child->children; field; field = field->next)
          changed.Take(NameOf(field), TextOf(field));
        changed.Measure();
        WriteException(oid, DateOf(TextOf(Child(child, "OriginalDate"))), false, changed);
      }
    }
  }

  void WriteException(std::int64_t oid, double day, bool deleted, const Fields& fields) {
    insertException_.Bind(1, oid);
    insertException_.Bind(2, static_cast<std::int64_t>(day));
    insertException_.Bind(3, std::int64_t{deleted});
    fields.Bind(insertException_, 4);
    insertException_.Run();
  }

  Query insert_;
  Query insertException_;
  std::string categories_;
};

}  // namespace

std::unique_ptr<RecordWriter> MakeAppointmentWriter(const Database& store) {
  return std::make_unique<AppointmentWriter>(store);
}

}  // namespace floors
