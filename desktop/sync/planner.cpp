#include "desktop/sync/planner.h"

#include <fmt/format.h>

#include <map>
#include <set>
#include <string_view>
#include <utility>

#include "common/formats/items/identity.h"
#include "desktop/merge/three_way.h"
#include "desktop/sync/guards.h"
#include "desktop/sync/item_fields.h"
#include "desktop/sync/pairing.h"

namespace desktop {
namespace {

std::string& BodyOf(Item& item) {
  struct {
    std::string& operator()(formats::Contact& contact) const {
      return contact[formats::ContactField::kBody];
    }
    std::string& operator()(formats::Appointment& appointment) const { return appointment.body; }
    std::string& operator()(formats::Task& task) const { return task.body; }
  } const body;
  return std::visit(body, item);
}

// The same for the same copy of the same item: a run that comes after one that was broken off finds
// it again.
std::string UidOfCopy(const std::string& key, const Item& copy, std::size_t number) {
  const std::string hash =
      formats::ContentHash(fmt::format("{}\n{}\n{}", key, CommonHash(copy), number));
  return fmt::format("urn:uuid:{}-{}-{}-{}-{}", hash.substr(0, 8), hash.substr(8, 4),
                     hash.substr(12, 4), hash.substr(16, 4), hash.substr(20));
}

class Planner {
 public:
  Planner(const Sides& sides, const Memory& memory, const PlanPolicy& policy)
      : sides_(sides), memory_(memory), policy_(policy) {
    for (const auto& [name, file] : sides.desk) {
      if (file.readable) continue;
      for (const DeskItem& item : file.items) locked_.insert(&item);
    }
  }

  void Add(ItemKind kind, const Pairing& pair) {
    if (pair.handheld != nullptr && pair.handheld->unreadable) return AddUnreadable(kind, pair);
    const bool known = pair.link != nullptr;
    if (pair.desk != nullptr && pair.handheld != nullptr) {
      AddMet(pair);
    } else if (pair.desk != nullptr) {
      known ? AddGoneFromHandheld(pair) : AddNewOnDesk(pair);
    } else if (pair.handheld != nullptr) {
      known || pair.deleted ? AddGoneFromDesk(pair) : AddNewOnHandheld(pair);
    } else {
      Put(Begin(pair, Happening::kForget));
    }
  }

  void Note(std::vector<std::string> notices) {
    for (std::string& notice : notices) plan_.notices.push_back(std::move(notice));
  }

  void Stop(std::string why) { plan_.stop = std::move(why); }

  Plan Finish() && { return std::move(plan_); }

 private:
  const Item* Keep(Item item) { return &plan_.made.emplace_back(std::move(item)); }

  Action Begin(const Pairing& pair, Happening happening) {
    Action action;
    action.happening = happening;
    if (pair.link != nullptr) action.link = *pair.link;
    action.deskNow = pair.desk;
    action.handheldNow = pair.handheld;
    if (pair.desk != nullptr) {
      action.kind = KindOf(pair.desk->item);
      action.name = DisplayName(pair.desk->item);
    } else if (pair.handheld != nullptr) {
      const Item item = ItemOf(*pair.handheld, policy_.zone);
      action.kind = KindOf(item);
      action.name = DisplayName(item);
    } else {
      action.kind = pair.link->kind;
    }
    return action;
  }

  void Put(Action action) {
    if (action.desk != Effect::kNone && locked_.contains(action.deskNow)) {
      return LeaveAlone(action.kind, action.name, "its file on the desk cannot be read");
    }
    plan_.actions.push_back(std::move(action));
  }

  void LeaveAlone(ItemKind kind, const std::string& name, std::string_view why) {
    ++plan_.leftAlone;
    plan_.notices.push_back(fmt::format("{} {}: left alone, {}", NameOf(kind), name, why));
  }

  void AddUnreadable(ItemKind kind, const Pairing& pair) {
    const bool known = pair.link != nullptr;
    if (known && pair.desk != nullptr && !IsChanged(*pair.desk, *pair.link)) return;
    const std::string name = pair.desk != nullptr ? DisplayName(pair.desk->item)
                                                  : fmt::format("with OID {}", pair.handheld->oid);
    LeaveAlone(kind, name, "the handheld cannot send it");
  }

  void AddNewOnDesk(const Pairing& pair) {
    Action action = Begin(pair, Happening::kAdd);
    action.handheld = Effect::kAdd;
    action.handheldTo = &pair.desk->item;
    Put(std::move(action));
  }

  void AddNewOnHandheld(const Pairing& pair) {
    Action action = Begin(pair, Happening::kAdd);
    Item item = ItemOf(*pair.handheld, policy_.zone);
    SetUid(item, formats::NewUid());
    // Who changes the name on the desk then need not change that, too.
    if (auto* contact = std::get_if<formats::Contact>(&item)) {
      *contact = formats::WithoutDerivedFileAs(std::move(*contact));
    }
    action.desk = Effect::kAdd;
    action.deskTo = Keep(std::move(item));
    Put(std::move(action));
  }

  void AddGoneFromHandheld(const Pairing& pair) {
    const bool changed = IsChanged(*pair.desk, *pair.link);
    Action action = Begin(pair, changed ? Happening::kKeep : Happening::kDelete);
    if (changed) {
      action.handheld = Effect::kAdd;
      action.handheldTo = &pair.desk->item;
    } else {
      action.desk = Effect::kDelete;
    }
    Put(std::move(action));
  }

  void AddGoneFromDesk(const Pairing& pair) {
    const Item item = ItemOf(*pair.handheld, policy_.zone);
    const bool changed = pair.link != nullptr && pair.handheld->hash != pair.link->recordHash &&
                         item != HandheldBase(*pair.link);
    Action action = Begin(pair, changed ? Happening::kKeep : Happening::kDelete);
    if (changed) {
      const Bases bases = memory_.BasesOf(*pair.link);
      const Item handheldBase = ItemOfRecord(bases.record, policy_.zone);
      action.desk = Effect::kAdd;
      action.deskTo = Keep(
          Merge({&bases.desk, bases.desk, &handheldBase, item}, Winner::kHandheld, policy_.numbers)
              .desk);
    } else {
      action.handheld = Effect::kDelete;
    }
    Put(std::move(action));
  }

  void AddMet(const Pairing& pair) {
    const bool known = pair.link != nullptr;
    const bool onHandheld = known && pair.handheld->hash != pair.link->recordHash;
    if (known && !onHandheld && !IsChanged(*pair.desk, *pair.link)) return AddMoved(pair);
    const Item handheld = ItemOf(*pair.handheld, policy_.zone);
    if (!known) {
      // What was put there is what the desk had: the desk's changes since are all there is.
      return AddMerged(pair,
                       {nullptr, pair.desk->item, pair.asPut ? &handheld : nullptr, handheld});
    }
    const Bases bases = memory_.BasesOf(*pair.link);
    const Item handheldBase = ItemOfRecord(bases.record, policy_.zone);
    AddMerged(pair, {&bases.desk, pair.desk->item, &handheldBase, handheld});
  }

  // Neither side has changed it; it may stand elsewhere.
  void AddMoved(const Pairing& pair) {
    const Link& link = *pair.link;
    const bool here = pair.desk->key == link.key && pair.desk->file.native() == link.file &&
                      pair.desk->line == link.line && pair.handheld->oid == link.oid;
    if (!here) Put(Begin(pair, Happening::kNote));
  }

  void AddMerged(const Pairing& pair, const MergeSides& sides) {
    Merged merged = Merge(sides, Winner::kDesk, policy_.numbers);
    Action action = Begin(pair, Happening::kNote);
    action.joined = pair.link == nullptr;
    action.conflicts = std::move(merged.conflicts);
    if (!action.conflicts.empty()) {
      const ConflictAnswer answer = AnswerFor(action);
      if (answer == ConflictAnswer::kLeave) {
        ++plan_.leftAlone;
        action.happening = Happening::kLeave;
        return Put(std::move(action));
      }
      const Merged other = Merge(sides, Winner::kHandheld, policy_.numbers);
      if (answer == ConflictAnswer::kKeepBoth) AddCopy(action, other.desk);
      action.happening =
          answer == ConflictAnswer::kKeepBoth ? Happening::kKeepBoth : Happening::kResolve;
      action.winner = answer == ConflictAnswer::kHandheld ? "handheld" : "desk";
      if (answer == ConflictAnswer::kHandheld) merged = other;
    }
    TakeMerged(action, std::move(merged), sides);
    Put(std::move(action));
  }

  void TakeMerged(Action& action, Merged merged, const MergeSides& sides) {
    if (merged.desk != sides.desk) {
      action.desk = Effect::kChange;
      action.deskFields = DifferentFields(sides.desk, merged.desk);
      action.deskTo = Keep(std::move(merged.desk));
    }
    const std::string before = RecordFor(sides.handheld, {}, policy_.zone).xml;
    if (RecordFor(merged.handheld, {}, policy_.zone).xml != before) {
      action.handheld = Effect::kChange;
      action.handheldFields = DifferentFields(sides.handheld, merged.handheld);
      action.handheldTo = Keep(std::move(merged.handheld));
    }
    const bool onDesk = action.desk != Effect::kNone;
    const bool onHandheld = action.handheld != Effect::kNone;
    if (action.happening != Happening::kNote || (!onDesk && !onHandheld)) return;
    const bool both = action.joined || (onDesk && onHandheld);
    action.happening = both ? Happening::kMerge : Happening::kChange;
  }

  ConflictAnswer AnswerFor(const Action& action) const {
    switch (policy_.conflict) {
      case ConflictPolicy::kDesk:
        return ConflictAnswer::kDesk;
      case ConflictPolicy::kHandheld:
        return ConflictAnswer::kHandheld;
      case ConflictPolicy::kAsk:
        if (!policy_.ask) return ConflictAnswer::kLeave;
        return policy_.ask({action.kind, action.name, action.conflicts});
      case ConflictPolicy::kKeepBoth:
        break;
    }
    return ConflictAnswer::kKeepBoth;
  }

  // It is on both sides before the original takes the desk's values.
  void AddCopy(const Action& original, Item copy) {
    std::string& body = BodyOf(copy);
    if (!body.empty()) body += '\n';
    body += kCopyMark;
    IndexUids();
    std::string uid;
    for (std::size_t number = 0;; ++number) {
      uid = UidOfCopy(original.deskNow->key, copy, number);
      const auto there = byUid_.find(uid);
      if (there == byUid_.end()) break;
      if (SameContent(*there->second, copy)) return;  // a run that was broken off has made it
    }
    SetUid(copy, uid);
    Action action;
    action.happening = Happening::kCopy;
    action.kind = original.kind;
    action.name = original.name;
    action.desk = Effect::kAdd;
    action.handheld = Effect::kAdd;
    action.deskTo = Keep(std::move(copy));
    action.handheldTo = action.deskTo;
    byUid_.emplace(uid, action.deskTo);
    Put(std::move(action));
  }

  void IndexUids() {
    if (!byUid_.empty()) return;
    for (const auto& [name, file] : sides_.desk) {
      for (const DeskItem& item : file.items) byUid_.emplace(UidOf(item.item), &item.item);
    }
  }

  bool IsChanged(const DeskItem& desk, const Link& link) const {
    if (desk.key == link.key && sides_.unchanged.contains(desk.file.native())) return false;
    return desk.item != memory_.BasesOf(link).desk;
  }

  Item HandheldBase(const Link& link) const {
    return ItemOfRecord(memory_.BasesOf(link).record, policy_.zone);
  }

  const Sides& sides_;
  const Memory& memory_;
  const PlanPolicy& policy_;
  std::map<std::string, const Item*> byUid_;  // of the desk, once it is asked for
  std::set<const DeskItem*> locked_;          // whose file cannot be read
  Plan plan_;
};

}  // namespace

Plan MakePlan(const Sides& sides, const Memory& memory, const std::vector<InFlight>& inFlight,
              const PlanPolicy& policy) {
  Planner planner(sides, memory, policy);
  Guard guard(memory, policy.zone);
  for (const auto& [kind, items] : sides.handheld) {
    Pairings pairings = PairUp(kind, sides, memory, inFlight, policy.numbers, policy.zone);
    planner.Note(std::move(pairings.notices));
    guard.Look(kind, pairings.pairs);
    for (const Pairing& pair : pairings.pairs) planner.Add(kind, pair);
  }
  if (!policy.allowDeletions) planner.Stop(guard.Objection());
  return std::move(planner).Finish();
}

}  // namespace desktop
