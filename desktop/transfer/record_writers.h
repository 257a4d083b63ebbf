// Records that come in, as the forms that people's programs take.
#pragma once

#include <functional>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "common/calendar/zone.h"
#include "common/formats/vcard/vcard.h"
#include "desktop/records/record_kind.h"
#include "desktop/transfer/mapping.h"

namespace desktop {

// Where the bytes of a form go, in order. What it throws passes through.
using ByteSink = std::function<void(std::string_view)>;

struct RecordLoss {
  std::string item;  // its name
  std::string loss;
};

class RecordWriter {
 public:
  virtual ~RecordWriter() = default;
  virtual void Begin() {}
  // The record must be of the writer's kind; an item must have an OID.
  virtual void Write(const Record& record) = 0;
  virtual void End() {}
  // After the end: what the form cannot say.
  [[nodiscard]] virtual std::vector<RecordLoss> Losses() const { return {}; }
};

struct WriterOptions {
  RecordKind kind = RecordKind::kContacts;
  RecordFormat format = RecordFormat::kXml;  // one that the kind can be had in
  formats::VCardVersion version = formats::VCardVersion::k30;
  calendar::Zone zone = calendar::Zone::OfHost();  // the handheld's
  formats::Overflow overflow = formats::Overflow::kLeftOut;
};

// Needs a mapping for those formats alone.
bool NeedsMapping(RecordFormat format);

// kXml is one document whose root holds the records, each with the bytes that it came with. kJson
// is an object a line, kCsv a line of names and one a record. Memory does not grow with the records
// of these, nor with those of kSmsBackup: that begins with how many it holds, so until the end they
// lie in a temporary file. kIcs is written at the end.
//
// The mapping, null where it is not needed, must outlive the writer. It gives each item its UID,
// and learns of new ones.
std::unique_ptr<RecordWriter> MakeRecordWriter(const WriterOptions& options, Mapping* mapping,
                                               ByteSink sink);

}  // namespace desktop
