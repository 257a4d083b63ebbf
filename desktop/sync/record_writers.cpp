#include "desktop/sync/record_writers.h"

#include <string>
#include <utility>

#include "common/formats/icalendar/icalendar.h"
#include "common/formats/json/calendar_json.h"
#include "common/formats/json/contact_json.h"
#include "common/formats/json/identity.h"
#include "desktop/records/appointment_xml.h"
#include "desktop/records/contact_xml.h"
#include "desktop/records/task_xml.h"
#include "desktop/records/wire_losses.h"
#include "desktop/sync/normal_form.h"
#include "desktop/sync/wire_hash.h"
#include "desktop/wire/record_kind.h"

namespace desktop {
namespace {

class XmlWriter : public RecordWriter {
 public:
  std::string Begin() override { return "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n<root>\n"; }
  std::string Write(const Record& record) override { return record.bytes + "\n"; }
  std::string End() override { return "</root>\n"; }
};

std::string ToJson(const Record& record, const calendar::Zone& zone) {
  const std::string_view kind = KindOfElement(record.element.name);
  if (kind == kAppointmentKind) {
    return formats::AppointmentToJson(AppointmentFromXml(record.element, zone), *record.oid);
  }
  if (kind == kTaskKind) return formats::TaskToJson(TaskFromXml(record.element, zone), *record.oid);
  return formats::ContactToJson(ContactFromXml(record.element), *record.oid);
}

class JsonWriter : public RecordWriter {
 public:
  explicit JsonWriter(const calendar::Zone& zone) : zone_(zone) {}

  std::string Begin() override { return "["; }
  std::string Write(const Record& record) override {
    const std::string separator = first_ ? "\n" : ",\n";
    first_ = false;
    return separator + ToJson(record, zone_);
  }
  std::string End() override { return first_ ? "]\n" : "\n]\n"; }

 private:
  calendar::Zone zone_;
  bool first_ = true;
};

// What a push has added without hearing of it, or null.
const MappedItem* FindExpected(const Mapping& mapping, const std::string& state) {
  for (const auto& [key, item] : mapping.expected()) {
    const bool mapped = item.uid.empty() ? mapping.FindContent(item.kind, item.content) != nullptr
                                         : mapping.FindUid(item.kind, item.uid) != nullptr;
    if (item.state == state && !mapped) return &item;
  }
  return nullptr;
}

// Takes the record into the mapping, and gives the UID that it has there.
std::string Remember(const Record& record, std::string hash, Mapping& mapping) {
  MappedItem item{*record.oid,
                  std::string(KindOfElement(record.element.name)),
                  {},
                  {},
                  std::move(hash),
                  StateHash(record.element)};
  const MappedItem* known = mapping.FindOid(item.oid);
  if (known != nullptr && known->kind == item.kind) {
    item.uid = known->uid;
  } else if (const MappedItem* added = FindExpected(mapping, item.state)) {
    item.uid = added->uid;
    item.content = added->content;
  }
  if (item.uid.empty()) item.uid = formats::NewUid();
  std::string uid = item.uid;
  mapping.Put(std::move(item));
  return uid;
}

class VCardWriter : public RecordWriter {
 public:
  VCardWriter(formats::VCardVersion version, Mapping& mapping)
      : version_(version), mapping_(mapping) {}

  std::string Write(const Record& record) override {
    formats::Contact contact = ContactFromXml(record.element);
    contact.uid = Remember(record, WireHash(contact), mapping_);
    return formats::WriteVCard(contact, version_);
  }

 private:
  formats::VCardVersion version_;
  Mapping& mapping_;
};

class ICalendarWriter : public RecordWriter {
 public:
  ICalendarWriter(const calendar::Zone& zone, Mapping& mapping) : zone_(zone), mapping_(mapping) {}

  std::string Write(const Record& record) override {
    if (KindOfElement(record.element.name) == kTaskKind) {
      formats::Task task = Normalized(TaskFromXml(record.element, zone_));
      task.uid = Remember(record, WireHash(task), mapping_);
      AddLosses(record, DisplayName(task));
      tasks_.push_back(std::move(task));
    } else {
      formats::Appointment appointment = Normalized(AppointmentFromXml(record.element, zone_));
      appointment.uid = Remember(record, WireHash(appointment, zone_), mapping_);
      AddLosses(record, DisplayName(appointment));
      appointments_.push_back(std::move(appointment));
    }
    return {};
  }

  std::string End() override {
    formats::CalendarText text = formats::WriteICalendar(appointments_, tasks_, zone_);
    losses_.insert(losses_.end(), text.losses.begin(), text.losses.end());
    return std::move(text.bytes);
  }

  [[nodiscard]] std::vector<std::string> Losses() const override { return losses_; }

 private:
  void AddLosses(const Record& record, const std::string& name) {
    const std::string item = name + ": ";
    for (const std::string& loss : RecordLosses(record.element)) losses_.push_back(item + loss);
  }

  calendar::Zone zone_;
  Mapping& mapping_;
  std::vector<formats::Appointment> appointments_;
  std::vector<formats::Task> tasks_;
  std::vector<std::string> losses_;
};

}  // namespace

std::unique_ptr<RecordWriter> MakeXmlWriter() {
  return std::make_unique<XmlWriter>();
}

std::unique_ptr<RecordWriter> MakeJsonWriter(const calendar::Zone& zone) {
  return std::make_unique<JsonWriter>(zone);
}

std::unique_ptr<RecordWriter> MakeVCardWriter(formats::VCardVersion version, Mapping& mapping) {
  return std::make_unique<VCardWriter>(version, mapping);
}

std::unique_ptr<RecordWriter> MakeICalendarWriter(const calendar::Zone& zone, Mapping& mapping) {
  return std::make_unique<ICalendarWriter>(zone, mapping);
}

}  // namespace desktop
