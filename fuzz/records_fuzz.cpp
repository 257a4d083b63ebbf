// Any bytes as a document that an agent sends: what the desktop makes of it is valid, and stays the
// same when it is sent back and comes again.
#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

#include "common/calendar/zone.h"
#include "common/text/unicode.h"
#include "desktop/records/appointment_xml.h"
#include "desktop/records/contact_xml.h"
#include "desktop/records/record_kind.h"
#include "desktop/records/task_xml.h"
#include "desktop/transfer/state_hash.h"
#include "desktop/wire/error.h"
#include "desktop/wire/upload.h"
#include "desktop/wire/xml_records.h"
#include "fuzz/require.h"

namespace {

using desktop::Record;
using fuzz::Require;

const calendar::Zone& Zone() {
  static const calendar::Zone zone = *calendar::Zone::Find("Europe/Berlin");
  return zone;
}

Record Again(const std::string& xml) {
  return desktop::ParseRecords(desktop::DocumentOf({&xml, 1})).at(0);
}

void RequireJson(const Record& record, desktop::RecordKind kind) {
  const std::string json = desktop::WordsOf(kind).json(record, Zone());
  Require(text::IsValidUtf8(json), "JSON is UTF-8");
  Require(json.find('\n') == std::string::npos, "JSON is one line");
}

// Once the desktop has said it its own way, it says it so for ever.
template <typename FromXml, typename ToXml>
void RequireStable(const Record& record, const FromXml& fromXml, const ToXml& toXml) {
  const std::string once = toXml(fromXml(record.element));
  const std::string twice = toXml(fromXml(Again(once).element));
  Require(once == twice, "a record is written as it was read");
}

void Look(const Record& record) {
  const std::string_view name = desktop::KindOfElement(record.element.name);
  const std::optional<desktop::RecordKind> kind = desktop::KindNamed(name);
  if (!kind) return;
  if (!desktop::WordsOf(*kind).isItem) return RequireJson(record, *kind);
  if (!record.oid) return;
  RequireJson(record, *kind);
  Require(desktop::StateHash(record.element).size() == 32, "a state is a hash");
  if (name == desktop::kContactKind) {
    RequireStable(record, desktop::ContactFromXml,
                  [](const formats::Contact& contact) { return desktop::ContactToXml(contact); });
  } else if (name == desktop::kTaskKind) {
    RequireStable(
        record,
        [](const desktop::XmlElement& element) { return desktop::TaskFromXml(element, Zone()); },
        desktop::TaskToXml);
  }
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  std::vector<Record> records;
  try {
    records = desktop::ParseRecords({reinterpret_cast<const char*>(data), size});
  } catch (const desktop::Error&) {
    return 0;
  }
  for (const Record& record : records) Look(record);
  return 0;
}
