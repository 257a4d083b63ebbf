#include "bench/floor/down.h"

#include <cmath>
#include <stdexcept>

#include "bench/floor/contact_table.h"
#include "bench/floor/store_values.h"

namespace floors {
namespace {

constexpr int kRecordsPerDocument = 5;

std::string ContactSelect() {
  std::string sql = "SELECT oid";
  for (const ContactField& field : kContactFields) {
    if (field.kind != FieldKind::kUnsent) sql.append(", ").append(field.column);
  }
  return sql + " FROM contacts ORDER BY oid";
}

void AddEmail(Xml& xml, std::string_view type, std::string_view address, bool& any) {
  if (address.empty()) return;
  if (!any) xml.Raw("<EMAIL_ADDRESSES>");
  any = true;
  xml.Raw("<EMAIL_ADDRESS>");
  xml.Element("NAME", address);
  xml.Element("TYPE", type);
  xml.Raw("</EMAIL_ADDRESS>");
}

void AddContactFields(Xml& xml, const Query& contact) {
  bool anyEmail = false;
  int column = 1;
  for (const ContactField& field : kContactFields) {
    if (field.kind == FieldKind::kUnsent) return;
    if (anyEmail && field.kind != FieldKind::kEmail) {
      xml.Raw("</EMAIL_ADDRESSES>");
      anyEmail = false;
    }
    switch (field.kind) {
      case FieldKind::kEmail:
        AddEmail(xml, field.element, contact.Text(column), anyEmail);
        break;
      case FieldKind::kCategories:
        xml.Categories(contact.Text(column));
        break;
      case FieldKind::kDate:
        xml.Date(field.element, contact.Real(column));
        break;
      default:
        xml.Element(field.element, contact.Text(column));
    }
    ++column;
  }
}

void OpenRecord(Xml& xml, std::string_view name, std::int64_t oid) {
  xml.Raw("<");
  xml.Raw(name);
  xml.Raw(" Oid=\"");
  xml.Number(static_cast<std::int32_t>(oid));
  xml.Raw("\">");
}

// TRUE or no element.
void AddFlag(Xml& xml, std::string_view name, bool value) {
  if (value) xml.Element(name, "TRUE");
}

void AddDayList(Xml& xml, std::int64_t mask) {
  std::string days;
  for (int day = 0; day < 7; ++day) {
    if ((mask >> day & 1) == 0) continue;
    if (!days.empty()) days += ", ";
    days += static_cast<char>('0' + day);
  }
  xml.Element("DAYS_OF_WEEK", days);
}

// Of a series: its exceptions in the order of their days.
constexpr char kExceptions[] =
    "SELECT OriginalDay, Deleted, Subject, Location, Start, \"End\", BusyStatus, Body"
    " FROM exceptions WHERE oid = ?1 ORDER BY OriginalDay";

void AddExceptions(Xml& xml, Query& exceptions, std::int64_t oid) {
  exceptions.Bind(1, oid);
  while (exceptions.Step()) {
    const auto day = static_cast<double>(exceptions.Integer(0));
    if (exceptions.Integer(1) != 0) {
      xml.Date("DeletedException", day);
      continue;
    }
    xml.Raw("<ChangedException>");
    xml.Element("SUBJECT", exceptions.Text(2));
    xml.Element("LOCATION", exceptions.Text(3));
    xml.DateTime("EVENT_START", exceptions.Real(4));
    xml.DateTime("EVENT_END", exceptions.Real(5));
    xml.Element("BusyStatus", exceptions.Integer(6));
    xml.Element("NOTES", exceptions.Text(7));
    xml.Date("OriginalDate", day);
    xml.Raw("</ChangedException>");
  }
  exceptions.Reset();
}

// The series of the workload are weekly and have an end.
constexpr char kAppointments[] =
    "SELECT oid, Subject, Location, AllDayEvent, Categories, RecurrenceType, DayOfWeekMask,"
    " Interval, PatternEndDate, Occurrences, ReminderSet, ReminderMinutesBeforeStart, Sensitivity,"
    " Start, \"End\", BusyStatus, Body FROM appointments ORDER BY oid";

void AddSeries(Xml& xml, const Query& appointment, Query& exceptions) {
  if (appointment.Integer(5) != kWeekly) throw std::runtime_error("not a weekly series");
  xml.Raw("<IS_RECURRING>TRUE</IS_RECURRING><RECURRENCE><TYPE>WEEKLY</TYPE>");
  AddDayList(xml, appointment.Integer(6));
  if (appointment.Integer(7) != 1) xml.Element("FREQUENCY", appointment.Integer(7));
  xml.Date("END_DATE", appointment.Real(8));
  xml.Element("Occurrences", appointment.Integer(9));
  AddExceptions(xml, exceptions, appointment.Integer(0));
  xml.Raw("</RECURRENCE>");
}

void AddAppointment(Xml& xml, const Query& appointment, Query& exceptions) {
  OpenRecord(xml, "CALENDAR", appointment.Integer(0));
  xml.Element("SUBJECT", appointment.Text(1));
  xml.Element("LOCATION", appointment.Text(2));
  AddFlag(xml, "ALL_DAY_EVENT", appointment.Integer(3) != 0);
  xml.Categories(appointment.Text(4));
  if (!appointment.IsNull(5)) AddSeries(xml, appointment, exceptions);
  if (appointment.Integer(10) != 0) {
    xml.Raw("<HAS_REMINDER>TRUE</HAS_REMINDER>");
    xml.Element("ReminderMinutes", appointment.Integer(11));
  }
  AddFlag(xml, "Private", appointment.Integer(12) == kPrivate);
  xml.DateTime("EVENT_START", appointment.Real(13));
  xml.DateTime("EVENT_END", appointment.Real(14));
  xml.Element("BusyStatus", appointment.Integer(15));
  xml.Element("NOTES", appointment.Text(16));
  xml.Raw("</CALENDAR>");
}

// The tasks of the workload do not recur.
constexpr char kTasks[] =
    "SELECT oid, Subject, Categories, DueDate, ReminderSet, ReminderTime, StartDate, Sensitivity,"
    " Complete, DateCompleted, Importance, Body FROM tasks ORDER BY oid";

void AddTask(Xml& xml, const Query& task) {
  OpenRecord(xml, "TASK", task.Integer(0));
  xml.Element("SUBJECT", task.Text(1));
  xml.Categories(task.Text(2));
  const double due = task.Real(3);
  xml.Date("DUE_DATE", due);
  if (task.Integer(4) != 0) {
    const double reminder = task.Real(5);
    xml.Raw("<HAS_REMINDER>TRUE</HAS_REMINDER>");
    xml.DateTime("ReminderTime", reminder);
    xml.Element("ReminderMinutes", std::llround((due - reminder) * 1440));
  }
  xml.Date("StartDate", task.Real(6));
  AddFlag(xml, "Private", task.Integer(7) == kPrivate);
  if (task.Integer(8) != 0) {
    xml.Raw("<COMPLETED>TRUE</COMPLETED>");
    xml.Date("DateCompleted", task.Real(9));
  }
  xml.Element("PRIORITY", 4 - task.Integer(10));
  xml.Element("NOTES", task.Text(11));
  xml.Raw("</TASK>");
}

}  // namespace

void SendContacts(const Database& store, RecordStream& stream) {
  Query contact(store, ContactSelect());
  stream.Group(kRecordsPerDocument, kRecordsPerDocument);
  while (contact.Step()) {
    Xml& xml = stream.Next();
    OpenRecord(xml, "CONTACT", contact.Integer(0));
    AddContactFields(xml, contact);
    xml.Raw("</CONTACT>");
  }
}

void SendAppointments(const Database& store, RecordStream& stream) {
  Query appointment(store, kAppointments);
  Query exceptions(store, kExceptions);
  stream.Group(kRecordsPerDocument, kRecordsPerDocument);
  while (appointment.Step()) AddAppointment(stream.Next(), appointment, exceptions);
}

void SendTasks(const Database& store, RecordStream& stream) {
  Query task(store, kTasks);
  stream.Group(kRecordsPerDocument, kRecordsPerDocument);
  while (task.Step()) AddTask(stream.Next(), task);
}

}  // namespace floors
