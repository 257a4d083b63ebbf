#include "desktop/transfer/push_records.h"

#include <fmt/format.h>

#include <algorithm>
#include <cctype>
#include <map>
#include <span>
#include <utility>

#include "common/files/standard_streams.h"
#include "common/formats/icalendar/icalendar.h"
#include "common/formats/items/identity.h"
#include "common/formats/items/normal_form.h"
#include "common/formats/vcard/vcard.h"
#include "desktop/records/appointment_xml.h"
#include "desktop/records/contact_xml.h"
#include "desktop/records/task_xml.h"
#include "desktop/records/wire_losses.h"
#include "desktop/transfer/state_hash.h"
#include "desktop/wire/error.h"
#include "desktop/wire/upload.h"
#include "desktop/wire/xml_records.h"

namespace desktop {
namespace {

using calendar::Zone;
using formats::SeriesEnd;

constexpr std::string_view kBlanks = " \t\r\n\xEF\xBB\xBF";

std::string Place(const std::filesystem::path& path, std::size_t line) {
  return fmt::format("{}:{}", path.string(), line);
}

enum class FileKind { kVCards, kICalendar, kXml };

FileKind KindOf(const std::filesystem::path& path, std::string_view bytes) {
  std::string extension = path.extension().string();
  std::transform(extension.begin(), extension.end(), extension.begin(),
                 [](unsigned char c) { return static_cast<char>(std::tolower(c)); });
  if (extension == ".xml") return FileKind::kXml;
  if (extension == ".ics") return FileKind::kICalendar;
  if (extension == ".vcf" || extension == ".vcard") return FileKind::kVCards;
  if (bytes[bytes.find_first_not_of(kBlanks)] == '<') return FileKind::kXml;
  return formats::LooksLikeICalendar(bytes) ? FileKind::kICalendar : FileKind::kVCards;
}

constexpr terminal::Noun kContacts = {"contact", "contacts"};
constexpr terminal::Noun kTimes = {"time", "times"};

void Report(const std::filesystem::path& path, std::span<const formats::Notice> notices,
            const NoticeSink& to, terminal::Noun noun, std::size_t owner = 0) {
  for (const formats::Notice& notice : notices) to(path, notice.line, notice.text, noun, owner);
}

template <typename Item>
PushRecord FromItem(std::string place, std::string_view kind, const Item& item, std::string xml,
                    std::vector<std::string> losses) {
  PushRecord record;
  record.place = std::move(place);
  record.title = DisplayName(item);
  record.kind = kind;
  record.uid = item.uid;
  record.hash = formats::ContentHash(xml);
  if (record.uid.empty()) record.content = record.hash;
  record.xml = std::move(xml);
  record.losses = std::move(losses);
  return record;
}

std::vector<PushRecord> FromVCards(const std::filesystem::path& path, std::string_view bytes,
                                   formats::Overflow overflow, const NoticeSink& notices) {
  const formats::VCardFile file = formats::ReadVCards(bytes, overflow);
  std::vector<PushRecord> records;
  for (const formats::ParsedContact& parsed : file.contacts) {
    Report(path, parsed.notices, notices, kContacts, records.size() + 1);
    records.push_back(RecordOf(Place(path, parsed.line), parsed.contact));
  }
  Report(path, file.notices, notices, kContacts);
  if (records.empty()) throw Error(fmt::format("{}: no vCard in it", path.string()));
  return records;
}

std::vector<PushRecord> FromICalendar(const std::filesystem::path& path, std::string_view bytes,
                                      const Zone& zone, const NoticeSink& notices) {
  if (!formats::LooksLikeICalendar(bytes)) {
    throw Error(fmt::format("{}: no calendar in it", path.string()));
  }
  const formats::CalendarFile file = formats::ReadICalendar(bytes, zone);
  Report(path, file.notices, notices, kTimes);
  std::multimap<std::size_t, PushRecord> byLine;
  for (const formats::ParsedAppointment& parsed : file.appointments) {
    byLine.emplace(parsed.line, RecordOf(Place(path, parsed.line), parsed.appointment, zone));
  }
  for (const formats::ParsedTask& parsed : file.tasks) {
    byLine.emplace(parsed.line, RecordOf(Place(path, parsed.line), parsed.task));
  }
  std::vector<PushRecord> records;
  for (auto& entry : byLine) records.push_back(std::move(entry.second));
  return records;
}

PushRecord FromElement(std::string place, const XmlElement& element, const Zone& zone) {
  const std::string_view kind = KindOfElement(element.name);
  if (kind == kContactKind) return RecordOf(std::move(place), ContactFromXml(element));
  if (kind == kTaskKind) return RecordOf(std::move(place), TaskFromXml(element, zone));
  return RecordOf(std::move(place), AppointmentFromXml(element, zone), zone);
}

PushRecord FromXmlRecord(const std::filesystem::path& path, Record& parsed, const Zone& zone) {
  PushRecord record = FromElement(Place(path, parsed.line), parsed.element, zone);
  if (!parsed.oid && !parsed.oidText.empty()) {
    throw Error(fmt::format("{}: \"{}\" is no object identifier", record.place, parsed.oidText));
  }
  record.ownOid = parsed.oid;
  record.deletes = parsed.deletes;
  if (record.ownOid || record.deletes) record.content.clear();
  record.losses.clear();  // it is sent as it stands
  record.state = StateOf(record);
  record.xml = std::move(parsed.bytes);
  return record;
}

std::vector<PushRecord> FromXml(const std::filesystem::path& path, std::string_view bytes,
                                const Zone& zone, const NoticeSink& notices) {
  std::vector<Record> parsed;
  try {
    parsed = ParseRecords(bytes);
  } catch (const Error& problem) {
    throw Error(fmt::format("{}: {}", path.string(), problem.what()));
  }
  std::vector<PushRecord> records;
  for (Record& each : parsed) {
    if (IsTakenByAgent(each.element.name)) {
      records.push_back(FromXmlRecord(path, each, zone));
    } else {
      notices(path, each.line, each.element.name + ": the handheld takes in no such record", kTimes,
              0);
    }
  }
  return records;
}

}  // namespace

PushRecord RecordOf(std::string place, const formats::Contact& contact) {
  return FromItem(std::move(place), kContactKind, contact,
                  ContactToXml(formats::WithFileAs(contact)), WireLosses(contact));
}

PushRecord RecordOf(std::string place, const formats::Appointment& appointment, const Zone& zone) {
  return FromItem(std::move(place), kAppointmentKind, appointment,
                  AppointmentToXml(Normalized(appointment, SeriesEnd::kCount), zone),
                  WireLosses(appointment, zone));
}

PushRecord RecordOf(std::string place, const formats::Task& task) {
  return FromItem(std::move(place), kTaskKind, task, TaskToXml(Normalized(task, SeriesEnd::kCount)),
                  WireLosses(task));
}

std::vector<PushRecord> ReadPushFile(const std::filesystem::path& path, const Zone& zone,
                                     const NoticeSink& notices, formats::Overflow overflow) {
  const std::string bytes = files::ReadWholeInput(path);
  if (bytes.find_first_not_of(kBlanks) == std::string::npos) return {};
  switch (KindOf(path, bytes)) {
    case FileKind::kXml:
      return FromXml(path, bytes, zone, notices);
    case FileKind::kICalendar:
      return FromICalendar(path, bytes, zone, notices);
    case FileKind::kVCards:
      break;
  }
  return FromVCards(path, bytes, overflow, notices);
}

std::string StateOf(const PushRecord& record) {
  if (!record.state.empty()) return record.state;
  return StateHash(ElementOf(record));
}

XmlElement ElementOf(const PushRecord& record) {
  return std::move(ParseRecords(DocumentOf({&record.xml, 1}))[0].element);
}

PushRecord DeletionOf(RecordKind kind, Oid oid) {
  const KindWords& words = WordsOf(kind);
  PushRecord record;
  record.place = words.name;
  record.kind = words.name;
  record.xml = fmt::format(R"(<{} Oid="{}" Delete="1"/>)", words.element, OidAttribute(oid));
  record.ownOid = oid;
  record.deletes = true;
  return record;
}

}  // namespace desktop
