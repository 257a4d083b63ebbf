// Contact records that come in, as the forms that people's programs take.
#pragma once

#include <memory>
#include <string>

#include "desktop/mapping.h"
#include "desktop/xml_records.h"
#include "formats/vcard.h"

namespace desktop {

class RecordWriter {
 public:
  virtual ~RecordWriter() = default;
  virtual std::string Begin() { return {}; }
  // The record must be a contact and have an OID.
  virtual std::string Write(const Record& record) = 0;
  virtual std::string End() { return {}; }
};

// One document whose root holds the records, each with the bytes that it came with.
std::unique_ptr<RecordWriter> MakeXmlWriter();
std::unique_ptr<RecordWriter> MakeJsonWriter();
// The mapping must outlive the writer. It gives each contact its UID, and learns of new ones.
std::unique_ptr<RecordWriter> MakeVCardWriter(formats::VCardVersion version, Mapping& mapping);

}  // namespace desktop
