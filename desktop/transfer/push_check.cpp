#include "desktop/transfer/push_check.h"

#include <fmt/format.h>

#include <utility>
#include <vector>

#include "desktop/records/record_kind.h"
#include "desktop/transfer/found_items.h"
#include "desktop/wire/error.h"

namespace desktop {
namespace {

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

std::set<Oid> FindMissing(const ConnectionOptions& connection,
                          std::span<const PushRecord> records) {
  std::map<RecordKind, std::vector<Oid>> oids;
  std::set<Oid> named;
  for (const PushRecord& record : records) {
    if (!record.deletes || !record.ownOid || !named.insert(*record.ownOid).second) continue;
    oids[*KindNamed(record.kind)].push_back(*record.ownOid);
  }
  const FoundItems found = FindItems(connection, oids);
  std::set<Oid> missing;
  for (const Oid oid : named) {
    const auto failed = found.failed.find(oid);
    const bool told = failed != found.failed.end();
    if (!told && !found.states.contains(oid)) ThrowNothingAbout(oid);
    if (told && (failed->second == kNoSuchItem || failed->second == kNotFound)) missing.insert(oid);
  }
  return missing;
}

}  // namespace desktop
