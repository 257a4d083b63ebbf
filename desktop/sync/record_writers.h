// Records that come in, as the forms that people's programs take.
#pragma once

#include <memory>
#include <string>
#include <vector>

#include "common/calendar/zone.h"
#include "common/formats/vcard/vcard.h"
#include "desktop/sync/mapping.h"
#include "desktop/wire/xml_records.h"

namespace desktop {

class RecordWriter {
 public:
  virtual ~RecordWriter() = default;
  virtual std::string Begin() { return {}; }
  // The record must be of a kind that the writer takes and have an OID.
  virtual std::string Write(const Record& record) = 0;
  virtual std::string End() { return {}; }
  // After the end: what the form cannot say, a line each with the name of what it is about.
  [[nodiscard]] virtual std::vector<std::string> Losses() const { return {}; }
};

// One document whose root holds the records, each with the bytes that it came with.
std::unique_ptr<RecordWriter> MakeXmlWriter();
// The zone is the handheld's.
std::unique_ptr<RecordWriter> MakeJsonWriter(const calendar::Zone& zone);
// Of contacts. The mapping must outlive the writer. It gives each contact its UID, and learns of
// new ones.
std::unique_ptr<RecordWriter> MakeVCardWriter(formats::VCardVersion version, Mapping& mapping);
// The same of appointments and tasks; all is written at the end.
std::unique_ptr<RecordWriter> MakeICalendarWriter(const calendar::Zone& zone, Mapping& mapping);

}  // namespace desktop
