#include "desktop/records/record_kind.h"

#include <algorithm>

#include "common/formats/items/item_json.h"
#include "common/formats/json/message_json.h"
#include "desktop/records/appointment_xml.h"
#include "desktop/records/contact_xml.h"
#include "desktop/records/phone_records.h"
#include "desktop/records/task_xml.h"

namespace desktop {
namespace {

using calendar::Zone;

std::string ContactJson(const Record& record, const Zone&) {
  return formats::ContactToJson(ContactFromXml(record.element), *record.oid);
}

std::string AppointmentJson(const Record& record, const Zone& zone) {
  return formats::AppointmentToJson(AppointmentFromXml(record.element, zone), *record.oid);
}

std::string TaskJson(const Record& record, const Zone& zone) {
  return formats::TaskToJson(TaskFromXml(record.element, zone), *record.oid);
}

std::string MessageJson(const Record& record, const Zone&) {
  return formats::MessageToJson(MessageFromXml(record.element), record.oidText);
}

std::string CallJson(const Record& record, const Zone&) {
  return formats::CallToJson(CallFromXml(record.element));
}

using enum RecordFormat;
constexpr RecordFormat kCards[] = {kVcf, kXml, kJson, kCsv};
constexpr RecordFormat kCalendar[] = {kIcs, kXml, kJson};
constexpr RecordFormat kTexts[] = {kJson, kXml, kSmsBackup};
constexpr RecordFormat kCallLog[] = {kJson, kXml, kSmsBackup, kCsv};

using enum RecordKind;
constexpr KindWords kKindWords[] = {
    {kContacts, "contacts", kContactKind, "a contact", "contacts", "CONTACT", true, kCards,
     ContactJson},
    {kContacts2, "contacts2", kContactKind, "a contact", "contacts", "Contact2", true, kCards,
     ContactJson},
    {kAppointments, "calendar", kAppointmentKind, "an appointment", "appointments", "CALENDAR",
     true, kCalendar, AppointmentJson},
    {kTasks, "tasks", kTaskKind, "a task", "tasks", "TASK", true, kCalendar, TaskJson},
    {kMessages, "messages", "text message", "a text message", "text messages", "SMS", false, kTexts,
     MessageJson},
    {kCalls, "calls", "call", "a call", "calls", "Call", false, kCallLog, CallJson},
};

template <typename Value>
const KindWords* Find(Value KindWords::*column, const Value& value) {
  const auto* const row = std::ranges::find(kKindWords, value, column);
  return row == std::end(kKindWords) ? nullptr : row;
}

}  // namespace

const KindWords& WordsOf(RecordKind kind) {
  return *Find(&KindWords::kind, kind);
}

bool IsFormatOf(RecordFormat format, RecordKind kind) {
  const auto formats = WordsOf(kind).formats;
  return std::ranges::find(formats, format) != formats.end();
}

std::string_view KindOfElement(std::string_view elementName) {
  const KindWords* const row = Find(&KindWords::element, elementName);
  return row == nullptr ? std::string_view() : row->name;
}

bool IsTakenByAgent(std::string_view elementName) {
  const KindWords* const row = Find(&KindWords::element, elementName);
  return row != nullptr && row->isItem;
}

std::optional<RecordKind> KindNamed(std::string_view name) {
  const KindWords* const row = Find(&KindWords::name, name);
  return row == nullptr ? std::nullopt : std::optional(row->kind);
}

}  // namespace desktop
