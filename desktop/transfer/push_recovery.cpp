#include "desktop/transfer/push_recovery.h"

#include <algorithm>
#include <set>
#include <utility>

#include "desktop/records/record_kind.h"
#include "desktop/transfer/push_records.h"
#include "desktop/wire/upload.h"

namespace desktop {
namespace {

const MappedItem* FindMapped(const Mapping& mapping, const MappedItem& expected) {
  return expected.uid.empty() ? mapping.FindContent(expected.kind, expected.content)
                              : mapping.FindUid(expected.kind, expected.uid);
}

}  // namespace

void PushRecovery::AdoptExpected() {
  for (const auto& [key, item] : mapping_.expected()) missing_[item.state].push_back(item);
  if (!missing_.empty()) AdoptAmong(Look());
  bool more = true;
  while (more && !missing_.empty()) {
    Pause(connection_, quiet_);
    more = AdoptAmong(Look());
  }
  for (const auto& [state, items] : missing_) {
    for (const MappedItem& item : items) mapping_.Settle(item);
  }
  mapping_.SaveChanges();
  DeleteSurplus();
}

void PushRecovery::DeleteLatecomers() {
  bool more = true;
  while (more && !missing_.empty()) {
    Pause(connection_, quiet_);
    more = SortOut(Look());
    DeleteSurplus();
  }
}

FoundItems PushRecovery::Look() const {
  std::set<RecordKind> kinds;
  for (const auto& [state, items] : missing_) {
    for (const MappedItem& item : items) {
      if (const auto kind = KindNamed(item.kind)) kinds.insert(*kind);
    }
  }
  return FindAllItems(connection_, kinds);
}

// The items that the mapping does not know.
PushRecovery::Strangers PushRecovery::StrangersAmong(const FoundItems& found) const {
  Strangers strangers;
  for (const auto& [oid, state] : found.states) {
    if (mapping_.FindOid(oid) == nullptr) strangers[state].push_back(oid);
  }
  return strangers;
}

void PushRecovery::Adopt(MappedItem item, Oid oid) {
  item.oid = oid;
  mapping_.Put(std::move(item));
}

// Whether any was there.
bool PushRecovery::AdoptAmong(const FoundItems& found) {
  Strangers strangers = StrangersAmong(found);
  bool some = false;
  for (auto& [state, items] : missing_) {
    std::deque<Oid>& oids = strangers[state];
    const bool again = std::ranges::all_of(items, &MappedItem::again);
    std::string kind;
    std::erase_if(items, [&](const MappedItem& item) {
      kind = item.kind;
      const MappedItem* known = FindMapped(mapping_, item);
      if (known != nullptr && found.Has(known->oid)) {  // it was to be changed, not added
        mapping_.Settle(item);
        return true;
      }
      if (oids.empty()) return false;
      Adopt(item, oids.front());
      oids.pop_front();
      some = true;
      return true;
    });
    // None like it was there when it was sent a second time: what is left came of the first.
    if (again && items.empty() && !kind.empty()) {
      surplus_[kind].insert(surplus_[kind].end(), oids.begin(), oids.end());
    }
  }
  std::erase_if(missing_, [](const auto& each) { return each.second.empty(); });
  mapping_.SaveChanges();
  return some;
}

bool PushRecovery::SortOut(const FoundItems& found) {
  Strangers strangers = StrangersAmong(found);
  bool some = false;
  for (auto& [state, items] : missing_) {
    std::deque<Oid>& oids = strangers[state];
    for (; !items.empty() && !oids.empty(); items.pop_back(), oids.pop_front()) {
      if (FindMapped(mapping_, items.back()) == nullptr) {
        Adopt(items.back(), oids.front());
      } else {
        surplus_[items.back().kind].push_back(oids.front());
      }
      some = true;
    }
  }
  std::erase_if(missing_, [](const auto& each) { return each.second.empty(); });
  mapping_.SaveChanges();
  return some;
}

void PushRecovery::DeleteSurplus() {
  constexpr std::size_t kAtOnce = 20;
  for (const auto& [kind, oids] : std::exchange(surplus_, {})) {
    if (oids.empty() || twice_ == Surplus::kLeave) continue;
    Upload upload(connection_);
    for (std::size_t i = 0; i < oids.size(); i += kAtOnce) {
      std::vector<std::string> records;
      for (std::size_t j = i; j < std::min(i + kAtOnce, oids.size()); ++j) {
        records.push_back(DeletionOf(*KindNamed(kind), oids[j]).xml);
      }
      upload.ThrowIfInterrupted();
      upload.Send(records);
      for (std::size_t j = 0; j < records.size(); ++j) {
        if (upload.Receive().result >= 0) ++deleted_;
      }
    }
    upload.Finish();
  }
}

}  // namespace desktop
