// What a synchronisation is about to do: one action an item.
#pragma once

#include <deque>
#include <string>
#include <string_view>
#include <vector>

#include "desktop/folder/desk_item.h"
#include "desktop/merge/item.h"
#include "desktop/merge/three_way.h"
#include "desktop/sync/handheld_items.h"
#include "desktop/sync/memory.h"

namespace desktop {

// What happens to a side.
enum class Effect { kNone, kAdd, kChange, kDelete };

enum class Happening {
  kAdd,       // it is new on one side
  kChange,    // it was changed on one side
  kMerge,     // on both
  kDelete,    // it was deleted on one side
  kKeep,      // it was changed on one side and deleted on the other: the change wins
  kKeepBoth,  // a conflict: the item stands twice from now on
  kCopy,      // the second one of these
  kResolve,   // a conflict, of which one side has its way
  kLeave,     // a conflict that waits for a person
  kNote,      // nothing to do, but something to remember
  kForget,    // it was deleted on both sides
};

struct Action {
  Happening happening = Happening::kNote;
  ItemKind kind = ItemKind::kContact;
  std::string name;
  bool joined = false;  // it was there on both sides already, and they have not met before

  Effect desk = Effect::kNone;
  std::vector<std::string> deskFields;  // that are changed there
  Effect handheld = Effect::kNone;
  std::vector<std::string> handheldFields;
  std::vector<FieldConflict> conflicts;
  std::string winner;  // of them, in a word

  // As it is, null where it is not; and as it is to be, null where nothing happens. They belong to
  // the two sides and to the plan.
  const DeskItem* deskNow = nullptr;
  const Item* deskTo = nullptr;
  const HandheldItem* handheldNow = nullptr;
  const Item* handheldTo = nullptr;
  Link link;  // with a number of 0 for one that is not remembered
};

struct Plan {
  // In the order of execution within a side: what must be there before something else may go.
  std::vector<Action> actions;
  std::deque<Item> made;             // items that actions point to
  std::vector<std::string> notices;  // a line each
  std::size_t leftAlone = 0;         // items that the run must leave as they are
  std::string stop;                  // why it must not be executed; empty where it may

  [[nodiscard]] bool HasEffects() const;
};

struct SyncCounts {
  std::size_t added = 0;
  std::size_t changed = 0;
  std::size_t deleted = 0;
  std::size_t merged = 0;
  std::size_t conflicts = 0;
  std::size_t desk = 0;      // changes there
  std::size_t handheld = 0;  // and there
};
void Count(const Action& action, SyncCounts& counts);

// "2 added, 1 changed, 1 merged, 0 conflicts; desk 3, handheld 1".
std::string ToText(const SyncCounts& counts);

// "contact Brook, Ada: change on the desk: Body". Empty for what a person need not be told.
std::string ToText(const Action& action);
// "contact".
std::string_view NameOf(ItemKind kind);
// A word for programs.
std::string_view NameOf(Happening happening);
std::string_view NameOf(Effect effect);

}  // namespace desktop
