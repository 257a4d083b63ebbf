#include "handheld/tool/show_items.h"

#include <fmt/core.h>

#include <string>

#include "common/calendar/wall_time.h"
#include "common/formats/items/item_json.h"
#include "handheld/tool/item_walk.h"
#include "handheld/tool/pattern_words.h"
#include "handheld/tool/table.h"

namespace tool {
namespace {

using formats::Appointment;
using formats::Contact;
using formats::ContactField;
using formats::Task;

const std::string& FirstOf(const Contact& contact, std::initializer_list<ContactField> fields) {
  for (const ContactField field : fields)
    if (!contact[field].empty()) return contact[field];
  return contact[*fields.begin()];
}

// A kind's header, and a row as its cells behind the identifier.
std::string Header(const Contact&) {
  return fmt::format("{} {} {} E-mail", Column("Name", 28), Column("Company", 20),
                     Column("Phone", 20));
}

std::string Row(const Contact& contact) {
  const std::string& phone =
      FirstOf(contact, {ContactField::kMobileTelephoneNumber, ContactField::kHomeTelephoneNumber,
                        ContactField::kBusinessTelephoneNumber});
  const std::string& email = FirstOf(
      contact,
      {ContactField::kEmail1Address, ContactField::kEmail2Address, ContactField::kEmail3Address});
  return fmt::format("{} {} {} {}", Column(formats::DisplayName(contact), 28),
                     Column(contact[ContactField::kCompanyName], 20), Column(phone, 20), email);
}

std::string TimeOfDay(formats::local_seconds time) {
  return formats::IsoDateTime(time).substr(11, 5);
}

// "09:00-10:30", "22:00-02:00 +1" when it ends a day later, "all day", "3 days".
std::string Times(const formats::Occurrence& occurrence) {
  if (!occurrence.start) return "-";
  if (!occurrence.end) return TimeOfDay(*occurrence.start);
  const auto later = (formats::DayOf(*occurrence.end) - formats::DayOf(*occurrence.start)).count();
  if (occurrence.allDay) return later > 1 ? fmt::format("{} days", later) : "all day";
  std::string times = TimeOfDay(*occurrence.start);
  if (*occurrence.end != *occurrence.start) times += "-" + TimeOfDay(*occurrence.end);
  return later > 0 ? fmt::format("{} +{}", times, later) : times;
}

std::string SeriesWords(const formats::Series& series) {
  std::string words = PatternWords(series.pattern);
  if (const std::size_t count = series.deleted.size() + series.changed.size())
    words += "; " + Counted(count, "exception");
  return words;
}

std::string Header(const Appointment&) {
  return fmt::format("{} {} {} {} Repeats", Column("Date", 10), Column("Time", 14),
                     Column("Subject", 32), Column("Place", 20));
}

std::string Row(const Appointment& appointment) {
  const std::string date =
      appointment.start ? formats::IsoDate(formats::DayOf(*appointment.start)) : "-";
  return fmt::format("{} {} {} {} {}", Column(date, 10), Column(Times(appointment), 14),
                     Column(formats::DisplayName(appointment), 32),
                     Column(appointment.location, 20),
                     appointment.series ? SeriesWords(*appointment.series) : "");
}

std::string Header(const Task&) {
  return fmt::format("Done {} {} {} Repeats", Column("Due", 10), Column("Priority", 8),
                     Column("Subject", 40));
}

const char* PriorityWord(formats::Importance importance) {
  if (importance == formats::Importance::kHigh) return "high";
  return importance == formats::Importance::kLow ? "low" : "normal";
}

std::string Row(const Task& task) {
  return fmt::format("{} {} {} {} {}", task.complete ? "[x] " : "[ ] ",
                     Column(task.due ? formats::IsoDate(*task.due) : "-", 10),
                     Column(PriorityWord(task.importance), 8),
                     Column(formats::DisplayName(task), 40),
                     task.pattern ? PatternWords(*task.pattern) : "");
}

std::string ToJson(const Contact& contact, std::uint32_t oid) {
  return formats::ContactToJson(contact, oid);
}
std::string ToJson(const Appointment& appointment, std::uint32_t oid) {
  return formats::AppointmentToJson(appointment, oid);
}
std::string ToJson(const Task& task, std::uint32_t oid) {
  return formats::TaskToJson(task, oid);
}

template <typename Record>
void PrintJson(Session& session, const Report& report) {
  const char* before = "";
  fmt::print(report.out, "[");
  ForEachItem<Record>(session, [&](std::uint32_t oid, const Record& record) {
    fmt::print(report.out, "{}\n{}", before, ToJson(record, oid));
    before = ",";
  });
  fmt::print(report.out, "{}]\n", *before ? "\n" : "");
}

template <typename Record>
void PrintTable(Session& session, const Report& report) {
  std::size_t count = 0;
  ForEachItem<Record>(session, [&](std::uint32_t oid, const Record& record) {
    if (count++ == 0) fmt::print(report.out, "{:>10}  {}\n", "OID", Header(record));
    fmt::print(report.out, "{:>10}  {}\n", oid, Row(record));
  });
  fmt::print(report.out, "{}\n", Counted(count, KindOf<Record>::kName));
}

template <typename Record>
Outcome Show(Session& session, bool json, const Report& report) {
  json ? PrintJson<Record>(session, report) : PrintTable<Record>(session, report);
  return Outcome::kDone;
}

}  // namespace

Outcome ShowContacts(Session& session, bool json, const Report& report) {
  return Show<Contact>(session, json, report);
}

Outcome ShowCalendar(Session& session, bool json, const Report& report) {
  return Show<Appointment>(session, json, report);
}

Outcome ShowTasks(Session& session, bool json, const Report& report) {
  return Show<Task>(session, json, report);
}

}  // namespace tool
