#include "desktop/sync/pairing.h"

#include <fmt/format.h>

#include <algorithm>
#include <iterator>
#include <string_view>
#include <unordered_map>
#include <unordered_set>
#include <utility>

#include "desktop/merge/joins.h"
#include "desktop/sync/plan.h"
#include "desktop/transfer/state_hash.h"

namespace desktop {
namespace {

template <typename Item, typename KeyOf>
auto Indexed(const std::vector<const Item*>& items, const KeyOf& keyOf) {
  std::unordered_map<decltype(keyOf(items[0])), const Item*> index;
  index.reserve(items.size());
  for (const Item* item : items) index.emplace(keyOf(item), item);
  return index;
}

std::string_view DeskKeyOf(const DeskItem* item) {
  return item->key;
}

template <typename Index, typename Key>
auto Find(const Index& index, const Key& key) {
  const auto found = index.find(key);
  return found == index.end() ? nullptr : found->second;
}

class Pairer {
 public:
  Pairer(ItemKind kind, const Sides& sides, const phone::PhoneNumbers& numbers,
         const calendar::Zone& zone)
      : kind_(kind), numbers_(numbers), zone_(zone) {
    for (const auto& [name, file] : sides.desk) {
      for (const DeskItem& item : file.items) {
        if (KindOf(item.item) == kind) newDesk_.push_back(&item);
      }
    }
    for (const HandheldItem& item : sides.handheld.at(kind)) newHandheld_.push_back(&item);
  }

  void TakeLinks(const std::vector<Link>& links) {
    const auto byKey = Indexed(newDesk_, DeskKeyOf);
    const auto byOid = Indexed(newHandheld_, [](const HandheldItem* item) { return item->oid; });
    for (const Link& link : links) {
      if (link.kind != kind_) continue;
      result_.pairs.push_back({&link, Find(byKey, link.key), Find(byOid, link.oid)});
    }
    TakeAway(0);
  }

  // What a run before this one has put there.
  void TakeInFlight(const std::vector<InFlight>& inFlight) {
    if (inFlight.empty()) return;
    const auto byKey = Indexed(newDesk_, DeskKeyOf);
    const auto byUid = Indexed(
        newDesk_, [](const DeskItem* item) -> std::string_view { return UidOf(item->item); });
    const auto byOid = Indexed(newHandheld_, [](const HandheldItem* item) { return item->oid; });
    for (const InFlight& each : inFlight) {
      if (each.kind != kind_) continue;
      const DeskItem* const desk = each.uid.empty() ? Find(byKey, each.key) : Find(byUid, each.uid);
      if (each.oid == 0 && desk != nullptr && !IsTaken(desk)) {
        result_.pairs.push_back({{}, desk});
      }
      const HandheldItem* const handheld = Find(byOid, each.oid);
      if (handheld == nullptr || handheld->unreadable) continue;
      if (desk == nullptr && CompleteLink(each, *handheld)) continue;
      const bool asPut = IsAsPut(each, *handheld);
      const bool deleted = desk == nullptr && each.uid.empty() && asPut;
      if (desk == nullptr && !deleted) continue;
      result_.pairs.push_back({{}, desk, handheld, asPut, deleted});
    }
    TakeAway(0);
  }

  void JoinTheNew() {
    const std::size_t first = result_.pairs.size();
    std::vector<HandheldItem const*> readable = Readable();
    ForEachJoin(
        newDesk_, readable,
        [&](std::size_t desk, std::size_t handheld) {
          result_.pairs.push_back({{}, newDesk_[desk], readable[handheld]});
        },
        [&](std::size_t desk, std::size_t handheld) {
          result_.notices.push_back(
              fmt::format("{} {} on the desk and {} on the handheld are alike, and are kept as two",
                          NameOf(kind_), DisplayName(newDesk_[desk]->item),
                          DisplayName(ItemOf(*readable[handheld], zone_))));
        });
    TakeAway(first);
  }

  // What is gone on one side, and there again as another item.
  void JoinTheReplaced() {
    std::vector<Pairing*> withoutDesk;
    std::vector<Pairing*> withoutHandheld;
    for (Pairing& each : result_.pairs) {
      const bool hasHandheld = each.handheld != nullptr && !each.handheld->unreadable;
      if (each.link == nullptr) continue;
      if (each.desk == nullptr && hasHandheld) withoutDesk.push_back(&each);
      if (each.desk != nullptr && each.handheld == nullptr) withoutHandheld.push_back(&each);
    }
    if (withoutDesk.empty() && withoutHandheld.empty()) return;
    std::vector<const HandheldItem*> handhelds;
    handhelds.reserve(withoutDesk.size());
    for (const Pairing* each : withoutDesk) handhelds.push_back(each->handheld);
    std::vector<const DeskItem*> desks;
    desks.reserve(withoutHandheld.size());
    for (const Pairing* each : withoutHandheld) desks.push_back(each->desk);
    const auto ignore = [](std::size_t, std::size_t) {};
    ForEachJoin(
        newDesk_, handhelds,
        [&](std::size_t desk, std::size_t which) { withoutDesk[which]->desk = newDesk_[desk]; },
        ignore);
    const std::vector<const HandheldItem*> readable = Readable();
    ForEachJoin(
        desks, readable,
        [&](std::size_t which, std::size_t handheld) {
          withoutHandheld[which]->handheld = readable[handheld];
        },
        ignore);
    TakeAway(0);
  }

  Pairings Finish() && {
    for (const DeskItem* item : newDesk_) result_.pairs.push_back({{}, item});
    for (const HandheldItem* item : newHandheld_) result_.pairs.push_back({{}, nullptr, item});
    return std::move(result_);
  }

 private:
  static bool IsAsPut(const InFlight& each, const HandheldItem& handheld) {
    if (!each.recordHash.empty()) return each.recordHash == handheld.hash;
    if (each.state.empty()) return false;
    return each.state == StateHash(ParseRecords("<root>" + handheld.record + "</root>")[0].element);
  }

  [[nodiscard]] std::vector<const HandheldItem*> Readable() const {
    std::vector<const HandheldItem*> readable;
    std::ranges::copy_if(newHandheld_, std::back_inserter(readable),
                         [](const HandheldItem* item) { return !item->unreadable; });
    return readable;
  }

  template <typename OnSure, typename OnUnsure>
  void ForEachJoin(const std::vector<const DeskItem*>& desks,
                   const std::vector<const HandheldItem*>& handhelds, const OnSure& onSure,
                   const OnUnsure& onUnsure) const {
    if (desks.empty() || handhelds.empty()) return;
    std::vector<Item> deskItems;
    deskItems.reserve(desks.size());
    for (const DeskItem* each : desks) deskItems.push_back(each->item);
    std::vector<Item> handheldItems;
    handheldItems.reserve(handhelds.size());
    for (const HandheldItem* each : handhelds) handheldItems.push_back(ItemOf(*each, zone_));
    const Joins joins = FindJoins(deskItems, handheldItems, numbers_);
    for (const Join& join : joins.sure) onSure(join.desk, join.handheld);
    for (const Join& join : joins.unsure) onUnsure(join.desk, join.handheld);
  }

  // What is known of was gone from the handheld, and is there again.
  bool CompleteLink(const InFlight& each, const HandheldItem& handheld) {
    const auto pair = std::ranges::find_if(result_.pairs, [&](const Pairing& known) {
      return known.link != nullptr && known.link->key == each.key;
    });
    if (each.key.empty() || pair == result_.pairs.end()) return false;
    if (pair->handheld == nullptr) pair->handheld = &handheld;
    return pair->handheld == &handheld;
  }

  [[nodiscard]] bool IsTaken(const DeskItem* desk) const {
    return std::ranges::any_of(result_.pairs,
                               [&](const Pairing& pair) { return pair.desk == desk; });
  }

  // The items of pairs from that one on are not new any more.
  void TakeAway(std::size_t first) {
    std::unordered_set<const void*> paired;
    paired.reserve(2 * (result_.pairs.size() - first));
    for (std::size_t i = first; i < result_.pairs.size(); ++i) {
      paired.insert(result_.pairs[i].desk);
      paired.insert(result_.pairs[i].handheld);
    }
    const auto isPaired = [&](const void* item) { return paired.contains(item); };
    std::erase_if(newDesk_, isPaired);
    std::erase_if(newHandheld_, isPaired);
  }

  const ItemKind kind_;
  const phone::PhoneNumbers& numbers_;
  const calendar::Zone& zone_;
  std::vector<const DeskItem*> newDesk_;
  std::vector<const HandheldItem*> newHandheld_;
  Pairings result_;
};

}  // namespace

Pairings PairUp(ItemKind kind, const Sides& sides, const Memory& memory,
                const std::vector<InFlight>& inFlight, const phone::PhoneNumbers& numbers,
                const calendar::Zone& zone) {
  Pairer pairer(kind, sides, numbers, zone);
  pairer.TakeLinks(memory.links());
  pairer.TakeInFlight(inFlight);
  pairer.JoinTheNew();
  pairer.JoinTheReplaced();
  return std::move(pairer).Finish();
}

Item ItemOf(const HandheldItem& handheld, const calendar::Zone& zone) {
  return handheld.item ? *handheld.item : ItemOfRecord(handheld.record, zone);
}

}  // namespace desktop
