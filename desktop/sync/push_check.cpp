#include "desktop/sync/push_check.h"

#include <fmt/format.h>

#include <set>
#include <string>
#include <string_view>
#include <unordered_map>
#include <utility>
#include <vector>

#include "desktop/records/record_kind.h"
#include "desktop/sync/state_hash.h"
#include "desktop/wire/download.h"
#include "desktop/wire/error.h"
#include "desktop/wire/status_text.h"
#include "desktop/wire/xml_records.h"

namespace desktop {
namespace {

constexpr auto kNoSuchItem = static_cast<std::int32_t>(0x80070057);
constexpr auto kNotFound = static_cast<std::int32_t>(0x80070002);

struct Found {
  std::map<Oid, std::string> states;   // by StateHash
  std::map<Oid, std::int32_t> failed;  // with their status

  void Take(const std::string& document) {
    for (const Record& record : ParseRecords(document)) {
      if (!record.oid) continue;
      if (record.element.name == kErrorElement) failed.emplace(*record.oid, ErrorValue(record));
      if (!IsTakenByAgent(record.element.name)) continue;
      if (!states.emplace(*record.oid, StateHash(record.element)).second) {
        throw Error(fmt::format("the answer makes no sense: OID {} twice", *record.oid));
      }
    }
  }
};

void Require(std::int32_t status) {
  if (status != 0) throw Error("the handheld broke off: " + StatusText(status));
}

Found Fetch(const ConnectionOptions& connection,
            const std::map<RecordKind, std::vector<Oid>>& oids) {
  Found found;
  for (const auto& [kind, wanted] : oids) {
    Require(DownloadSpecific(connection, kind, wanted,
                             [&](const std::string& document) { found.Take(document); }));
  }
  return found;
}

Found FetchAll(const ConnectionOptions& connection, const std::set<RecordKind>& kinds) {
  Found found;
  for (const RecordKind kind : kinds) {
    Require(
        DownloadAll(connection, kind, [&](const std::string& document) { found.Take(document); }));
  }
  return found;
}

[[noreturn]] void ThrowNothingAbout(Oid oid) {
  throw Error(fmt::format("the answer makes no sense: nothing about OID {}", oid));
}

ItemState Compare(const Found& found, const MappedItem& item, const PushRecord& record) {
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
  const Found found = Fetch(connection, oids);
  for (const auto& [item, record] : mapped) {
    ItemState& state = states[item->oid];
    if (state == ItemState::kChanged) state = Compare(found, *item, *record);
  }
  return states;
}

std::set<Oid> FindMissing(const ConnectionOptions& connection,
                          std::span<const PushRecord> records) {
  std::map<RecordKind, std::vector<Oid>> oids;
  std::set<Oid> named;
  for (const PushRecord& record : records) {
    if (!record.deletes || !record.ownOid || !named.insert(*record.ownOid).second) continue;
    oids[*KindNamed(record.kind)].push_back(*record.ownOid);
  }
  const Found found = Fetch(connection, oids);
  std::set<Oid> missing;
  for (const Oid oid : named) {
    const auto failed = found.failed.find(oid);
    const bool told = failed != found.failed.end();
    if (!told && !found.states.contains(oid)) ThrowNothingAbout(oid);
    if (told && (failed->second == kNoSuchItem || failed->second == kNotFound)) missing.insert(oid);
  }
  return missing;
}

void AdoptExpected(const ConnectionOptions& connection, Mapping& mapping) {
  if (mapping.expected().empty()) return;
  const std::map<std::string, MappedItem> expected = mapping.expected();
  std::set<RecordKind> kinds;
  for (const auto& entry : expected) {
    if (const auto kind = KindNamed(entry.second.kind)) kinds.insert(*kind);
  }
  const Found found = FetchAll(connection, kinds);
  std::unordered_multimap<std::string_view, Oid> strangers;  // by state
  for (const auto& [oid, state] : found.states) {
    if (mapping.FindOid(oid) == nullptr) strangers.emplace(state, oid);
  }
  for (const auto& entry : expected) {
    const MappedItem& item = entry.second;
    mapping.Settle(item);
    const MappedItem* before = item.uid.empty() ? mapping.FindContent(item.kind, item.content)
                                                : mapping.FindUid(item.kind, item.uid);
    const bool there = before != nullptr &&
                       (found.states.contains(before->oid) || found.failed.contains(before->oid));
    if (there) continue;  // it was to be changed, not added
    const auto match = strangers.find(item.state);
    if (match == strangers.end()) continue;
    MappedItem adopted = item;
    adopted.oid = match->second;
    strangers.erase(match);
    mapping.Put(std::move(adopted));
  }
}

}  // namespace desktop
