#include "desktop/transfer/push_check.h"

#include <fmt/format.h>

#include <algorithm>
#include <utility>

#include "desktop/records/contact_xml.h"
#include "desktop/records/record_kind.h"
#include "desktop/transfer/found_items.h"
#include "desktop/wire/download.h"
#include "desktop/wire/error.h"
#include "desktop/wire/status_text.h"

namespace desktop {
namespace {

using formats::Contact;
using formats::ContactField;

constexpr ContactField kPhoneticNames[] = {
    ContactField::kYomiFirstName, ContactField::kYomiLastName, ContactField::kYomiCompanyName};

constexpr auto kNoSuchItem = static_cast<std::int32_t>(0x80070057);
constexpr auto kNotFound = static_cast<std::int32_t>(0x80070002);

[[noreturn]] void ThrowNothingAbout(Oid oid) {
  throw Error(fmt::format("the answer makes no sense: nothing about OID {}", oid));
}

ItemState Compare(const FoundItems& found, const MappedItem& item, const PushRecord& record) {
  const auto state = found.states.find(item.oid);
  if (found.failed.contains(item.oid)) {
    // A part of it that came before it failed is no ground to take it for gone.
    return state == found.states.end() ? ItemState::kGone : ItemState::kChanged;
  }
  if (state == found.states.end()) {
    ThrowNothingAbout(item.oid);
  }
  const bool same =
      item.state.empty() || state->second == item.state || state->second == StateOf(record);
  return same ? ItemState::kSame : ItemState::kChanged;
}

}  // namespace

const MappedItem* FindMapped(const Mapping& mapping, const PushRecord& record) {
  if (record.ownOid) return nullptr;
  if (!record.uid.empty()) return mapping.FindUid(record.kind, record.uid);
  return record.content.empty() ? nullptr : mapping.FindContent(record.kind, record.content);
}

std::map<Oid, ItemState> CheckMapped(const ConnectionOptions& connection, const Mapping& mapping,
                                     std::span<const PushRecord> records) {
  std::map<Oid, ItemState> states;
  std::vector<std::pair<const MappedItem*, const PushRecord*>> mapped;
  std::map<RecordKind, std::vector<Oid>> oids;
  for (const PushRecord& record : records) {
    const MappedItem* item = FindMapped(mapping, record);
    if (item == nullptr) continue;
    mapped.emplace_back(item, &record);
    if (states.emplace(item->oid, ItemState::kChanged).second) {
      oids[*KindNamed(item->kind)].push_back(item->oid);
    }
  }
  const FoundItems found = FindItems(connection, oids);
  for (const auto& [item, record] : mapped) {
    ItemState& state = states[item->oid];
    if (state == ItemState::kChanged) state = Compare(found, *item, *record);
  }
  return states;
}

std::set<Oid> FindMissing(const ConnectionOptions& connection, std::span<const PushRecord> records,
                          Named named) {
  std::map<RecordKind, std::vector<Oid>> oids;
  std::set<Oid> wanted;
  for (const PushRecord& record : records) {
    if (!record.ownOid || (named == Named::kToDelete && !record.deletes)) continue;
    if (!wanted.insert(*record.ownOid).second) continue;
    oids[*KindNamed(record.kind)].push_back(*record.ownOid);
  }
  const FoundItems found = FindItems(connection, oids);
  std::set<Oid> missing;
  for (const Oid oid : wanted) {
    const auto failed = found.failed.find(oid);
    const bool told = failed != found.failed.end();
    if (!told && !found.states.contains(oid)) ThrowNothingAbout(oid);
    if (told && (failed->second == kNoSuchItem || failed->second == kNotFound)) missing.insert(oid);
  }
  return missing;
}

std::map<const PushRecord*, std::vector<std::string>> FindUnkeptNames(
    const ConnectionOptions& connection, const std::map<Oid, const PushRecord*>& sent) {
  std::map<Oid, Contact> contacts;
  std::vector<Oid> oids;
  for (const auto& [oid, record] : sent) {
    if (record->kind != kContactKind || record->deletes) continue;
    Contact contact = ContactFromXml(ElementOf(*record));
    if (std::ranges::all_of(kPhoneticNames, [&](auto name) { return contact[name].empty(); })) {
      continue;
    }
    contacts.emplace(oid, std::move(contact));
    oids.push_back(oid);
  }
  std::map<const PushRecord*, std::vector<std::string>> unkept;
  if (oids.empty()) return unkept;
  const auto look = [&](const std::string& document) {
    for (const Record& record : ParseRecords(document)) {
      const auto found = contacts.find(record.oid.value_or(0));
      if (found == contacts.end() || KindOfElement(record.element.name) != kContactKind) continue;
      const Contact kept = ContactFromXml(record.element);
      for (const ContactField name : kPhoneticNames) {
        if (found->second[name].empty() || !kept[name].empty()) continue;
        unkept[sent.at(found->first)].emplace_back(formats::ContactFieldName(name));
      }
    }
  };
  const std::int32_t status = DownloadSpecific(connection, RecordKind::kContacts, oids, look);
  if (status != 0) throw Error("the handheld broke off: " + StatusText(status));
  return unkept;
}

}  // namespace desktop
