#include "desktop/record_writers.h"

#include <string>
#include <utility>

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
    MappedItem item{*record.oid, std::string(kContactKind), {},
                    {},          WireHash(contact),         StateHash(contact)};
    Identify(item);
    contact.uid = item.uid;
    mapping_.Put(std::move(item));
    return formats::WriteVCard(contact, version_);
  }

 private:
  void Identify(MappedItem& item) const {
    const MappedItem* known = mapping_.FindOid(item.oid);
    if (known != nullptr && known->kind == kContactKind) {
      item.uid = known->uid;
    } else if (const MappedItem* added = FindExpected(item.state)) {
      item.uid = added->uid;
      item.content = added->content;
    }
    if (item.uid.empty()) item.uid = formats::NewUid();
  }

  // What a push has added without hearing of it, or null.
  const MappedItem* FindExpected(const std::string& state) const {
    for (const auto& [key, item] : mapping_.expected()) {
      const bool mapped = item.uid.empty()
                              ? mapping_.FindContent(item.kind, item.content) != nullptr
                              : mapping_.FindUid(item.kind, item.uid) != nullptr;
      if (item.state == state && !mapped) return &item;
    }
    return nullptr;
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
