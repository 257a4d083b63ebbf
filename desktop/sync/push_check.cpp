#include "desktop/sync/push_check.h"

#include <fmt/format.h>

#include <algorithm>
#include <set>
#include <string>
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

struct Found {
  std::map<Oid, std::string> states;  // by StateHash
  std::set<Oid> failed;

  void Take(const std::string& document) {
    for (const Record& record : ParseRecords(document)) {
      if (!record.oid) continue;
      if (record.element.name == "Error") failed.insert(*record.oid);
      if (IsTakenByAgent(record.element.name)) states[*record.oid] = StateHash(record.element);
    }
  }
};

void Require(std::int32_t status) {
  if (status != 0) throw Error("the handheld broke off: " + StatusText(status));
}

void Fetch(const ConnectionOptions& connection, RecordKind kind, std::span<const Oid> oids,
           Found& found) {
  while (!oids.empty()) {
    const auto batch = oids.first(std::min(oids.size(), OidsPerRequest()));
    Require(DownloadSpecific(connection, kind, batch,
                             [&](const std::string& document) { found.Take(document); }));
    oids = oids.subspan(batch.size());
  }
}

Found FetchAll(const ConnectionOptions& connection, const std::set<RecordKind>& kinds) {
  Found found;
  for (const RecordKind kind : kinds) {
    Require(
        DownloadAll(connection, kind, [&](const std::string& document) { found.Take(document); }));
  }
  return found;
}

ItemState StateOf(const Found& found, const MappedItem& item, const PushRecord& record) {
  const auto state = found.states.find(item.oid);
  if (found.failed.contains(item.oid)) {
    // A part of it that came before it failed is no ground to take it for gone.
    return state == found.states.end() ? ItemState::kGone : ItemState::kChanged;
  }
  if (state == found.states.end()) {
    throw Error(fmt::format("the answer makes no sense: nothing about OID {}", item.oid));
  }
  const bool same =
      item.state.empty() || state->second == item.state || state->second == record.state;
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
  Found found;
  for (const auto& [kind, wanted] : oids) Fetch(connection, kind, wanted, found);
  for (const auto& [item, record] : mapped) {
    ItemState& state = states[item->oid];
    if (state == ItemState::kChanged) state = StateOf(found, *item, *record);
  }
  return states;
}

void AdoptExpected(const ConnectionOptions& connection, Mapping& mapping) {
  if (mapping.expected().empty()) return;
  const std::map<std::string, MappedItem> expected = mapping.expected();
  std::set<RecordKind> kinds;
  for (const auto& entry : expected) {
    if (const auto kind = KindNamed(entry.second.kind)) kinds.insert(*kind);
  }
  const Found found = FetchAll(connection, kinds);
  for (const auto& entry : expected) {
    const MappedItem& item = entry.second;
    mapping.Settle(item);
    const MappedItem* before = item.uid.empty() ? mapping.FindContent(item.kind, item.content)
                                                : mapping.FindUid(item.kind, item.uid);
    const bool there = before != nullptr &&
                       (found.states.contains(before->oid) || found.failed.contains(before->oid));
    if (there) continue;  // it was to be changed, not added
    const auto match =
        std::find_if(found.states.begin(), found.states.end(), [&](const auto& each) {
          return each.second == item.state && mapping.FindOid(each.first) == nullptr;
        });
    if (match == found.states.end()) continue;
    MappedItem adopted = item;
    adopted.oid = match->first;
    mapping.Put(std::move(adopted));
  }
}

}  // namespace desktop
