#include "desktop/push_records.h"

#include <fmt/format.h>

#include <algorithm>
#include <cctype>

#include "desktop/contact_xml.h"
#include "desktop/error.h"
#include "desktop/mapping.h"
#include "desktop/upload.h"
#include "desktop/wire_hash.h"
#include "desktop/wire_losses.h"
#include "desktop/xml_records.h"
#include "files/atomic_file.h"
#include "formats/identity.h"
#include "formats/vcard.h"

namespace desktop {
namespace {

std::string Place(const std::filesystem::path& path, std::size_t line) {
  return fmt::format("{}:{}", path.string(), line);
}

bool IsXml(const std::filesystem::path& path, std::string_view bytes) {
  std::string extension = path.extension().string();
  std::transform(extension.begin(), extension.end(), extension.begin(),
                 [](unsigned char c) { return static_cast<char>(std::tolower(c)); });
  if (extension == ".xml") return true;
  if (extension == ".vcf" || extension == ".vcard") return false;
  const std::size_t first = bytes.find_first_not_of(" \t\r\n\xEF\xBB\xBF");
  return first != std::string_view::npos && bytes[first] == '<';
}

PushRecord FromContact(const std::filesystem::path& path, const formats::ParsedContact& parsed) {
  PushRecord record;
  record.place = Place(path, parsed.line);
  record.title = formats::DisplayName(parsed.contact);
  record.kind = kContactKind;
  record.uid = parsed.contact.uid;
  record.xml = ContactToXml(formats::WithFileAs(parsed.contact));
  record.hash = formats::ContentHash(record.xml);
  record.state = StateHash(ContactFromXml(ParseRecords(DocumentOf({&record.xml, 1}))[0].element));
  if (record.uid.empty()) record.content = record.hash;
  return record;
}

std::vector<PushRecord> FromVCards(const std::filesystem::path& path, std::string_view bytes,
                                   std::ostream& notices) {
  const formats::VCardFile file = formats::ReadVCards(bytes);
  const auto report = [&](const formats::Notice& notice) {
    notices << Place(path, notice.line) << ": " << notice.text << '\n';
  };
  std::vector<PushRecord> records;
  for (const formats::ParsedContact& parsed : file.contacts) {
    std::for_each(parsed.notices.begin(), parsed.notices.end(), report);
    for (const std::string& loss : WireLosses(parsed.contact)) report({parsed.line, loss});
    records.push_back(FromContact(path, parsed));
  }
  std::for_each(file.notices.begin(), file.notices.end(), report);
  return records;
}

PushRecord FromXmlRecord(const std::filesystem::path& path, Record& parsed) {
  PushRecord record;
  record.place = Place(path, parsed.line);
  if (!parsed.oid && !parsed.oidText.empty()) {
    throw Error(fmt::format("{}: \"{}\" is no object identifier", record.place, parsed.oidText));
  }
  record.ownOid = parsed.oid;
  record.deletes = parsed.deletes;
  if (IsContact(parsed.element.name)) {
    const formats::Contact contact = ContactFromXml(parsed.element);
    record.kind = kContactKind;
    record.title = formats::DisplayName(contact);
    record.hash = WireHash(contact);
    record.state = StateHash(contact);
  } else {
    record.kind = parsed.element.name;
    record.title = parsed.element.ChildText("SUBJECT");
    if (record.title.empty()) record.title = parsed.element.name;
    record.hash = formats::ContentHash(parsed.bytes);
  }
  if (!record.ownOid && !record.deletes) record.content = record.hash;
  record.xml = std::move(parsed.bytes);
  return record;
}

std::vector<PushRecord> FromXml(const std::filesystem::path& path, std::string_view bytes,
                                std::ostream& notices) {
  std::vector<Record> parsed;
  try {
    parsed = ParseRecords(bytes);
  } catch (const Error& problem) {
    throw Error(fmt::format("{}: {}", path.string(), problem.what()));
  }
  std::vector<PushRecord> records;
  for (Record& each : parsed) {
    if (IsTakenByAgent(each.element.name)) {
      records.push_back(FromXmlRecord(path, each));
    } else {
      notices << Place(path, each.line) << ": " << each.element.name
              << ": the handheld takes in no such record\n";
    }
  }
  return records;
}

}  // namespace

std::vector<PushRecord> ReadPushFile(const std::filesystem::path& path, std::ostream& notices) {
  const std::string bytes = files::ReadWholeFile(path);
  if (bytes.find_first_not_of(" \t\r\n\xEF\xBB\xBF") == std::string::npos) return {};
  const bool xml = IsXml(path, bytes);
  std::vector<PushRecord> records =
      xml ? FromXml(path, bytes, notices) : FromVCards(path, bytes, notices);
  if (records.empty() && !xml) throw Error(fmt::format("{}: no vCard in it", path.string()));
  return records;
}

PushRecord DeletionOf(Oid oid) {
  PushRecord record;
  record.place = "contact";
  record.kind = kContactKind;
  record.xml = fmt::format(R"(<CONTACT Oid="{}" Delete="1"/>)", OidAttribute(oid));
  record.ownOid = oid;
  record.deletes = true;
  return record;
}

}  // namespace desktop
