#include "desktop/record_writers.h"

#include "desktop/contact_xml.h"
#include "desktop/wire_hash.h"
#include "formats/contact_json.h"
#include "formats/identity.h"

namespace desktop {
namespace {

class XmlWriter : public RecordWriter {
 public:
  std::string Begin() override { return "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n<root>\n"; }
  std::string Write(const Record& record) override { return record.bytes + "\n"; }
  std::string End() override { return "</root>\n"; }
};

class JsonWriter : public RecordWriter {
 public:
  std::string Begin() override { return "["; }
  std::string Write(const Record& record) override {
    const std::string separator = first_ ? "\n" : ",\n";
    first_ = false;
    return separator + formats::ContactToJson(ContactFromXml(record.element), *record.oid);
  }
  std::string End() override { return first_ ? "]\n" : "\n]\n"; }

 private:
  bool first_ = true;
};

class VCardWriter : public RecordWriter {
 public:
  VCardWriter(formats::VCardVersion version, Mapping& mapping)
      : version_(version), mapping_(mapping) {}

  std::string Write(const Record& record) override {
    formats::Contact contact = ContactFromXml(record.element);
    contact.uid = UidFor(*record.oid);
    mapping_.Put({*record.oid, std::string(kContactKind), contact.uid, {}, WireHash(contact)});
    return formats::WriteVCard(contact, version_);
  }

 private:
  std::string UidFor(Oid oid) const {
    const MappedItem* item = mapping_.FindOid(oid);
    const bool known = item != nullptr && item->kind == kContactKind && !item->uid.empty();
    return known ? item->uid : formats::NewUid();
  }

  formats::VCardVersion version_;
  Mapping& mapping_;
};

}  // namespace

std::unique_ptr<RecordWriter> MakeXmlWriter() {
  return std::make_unique<XmlWriter>();
}

std::unique_ptr<RecordWriter> MakeJsonWriter() {
  return std::make_unique<JsonWriter>();
}

std::unique_ptr<RecordWriter> MakeVCardWriter(formats::VCardVersion version, Mapping& mapping) {
  return std::make_unique<VCardWriter>(version, mapping);
}

}  // namespace desktop
