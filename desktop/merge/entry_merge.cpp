#include "desktop/merge/entry_merge.h"

#include <algorithm>
#include <cstddef>
#include <optional>
#include <tuple>
#include <unordered_set>
#include <utility>

#include "desktop/merge/item.h"

namespace desktop {
namespace {

using Names = std::vector<std::string>;

std::unordered_set<std::string> SetOf(const Names& names) {
  std::unordered_set<std::string> set;
  for (const std::string& name : names) set.insert(CommonText(name));
  return set;
}

Names WithChangesOf(const Names& ownBase, const Names& own, const Names& otherBase,
                    const Names& other) {
  const auto before = SetOf(ownBase);
  const auto otherBefore = SetOf(otherBase);
  const auto there = SetOf(other);
  std::unordered_set<std::string> kept;
  Names names;
  for (const std::string& name : own) {
    const std::string common = CommonText(name);
    const bool removed = otherBefore.contains(common) && !there.contains(common);
    if (removed && before.contains(common)) continue;
    kept.insert(common);
    names.push_back(name);
  }
  for (const std::string& name : other) {
    const std::string common = CommonText(name);
    if (!otherBefore.contains(common) && kept.insert(common).second) names.push_back(name);
  }
  return names;
}

using SlotIndex = std::optional<std::size_t>;

// Which slot one entry has in each version.
struct Row {
  SlotIndex winnerBase;
  SlotIndex winner;
  SlotIndex loserBase;
  SlotIndex loser;

  [[nodiscard]] bool isNew() const { return !winnerBase && !loserBase; }
  [[nodiscard]] bool movedByWinner() const { return winnerBase && winner && winner != winnerBase; }
  [[nodiscard]] bool movedByLoser() const { return loserBase && loser && loser != loserBase; }
};
using RowSlot = SlotIndex Row::*;

const std::string& TextIn(const Slots& slots, SlotIndex slot) {
  static const std::string none;
  return slot ? slots[*slot] : none;
}

class RowTable {
 public:
  RowTable(const Versions<Slots>& versions, const Alike& alike) : alike_(alike) {
    Add(&Row::winnerBase, versions.winnerBase);
    LinkEqual(&Row::loserBase, versions.loserBase, &Row::winnerBase, versions.winnerBase);
    LinkInPlace(&Row::loserBase, versions.loserBase, &Row::winnerBase);
    Add(&Row::loserBase, versions.loserBase);
    LinkEqual(&Row::winner, versions.winner, &Row::winnerBase, versions.winnerBase);
    LinkEqual(&Row::loser, versions.loser, &Row::loserBase, versions.loserBase);
    AddCommon(versions.winner, versions.loser);
    LinkInPlace(&Row::winner, versions.winner, &Row::winnerBase);
    LinkInPlace(&Row::loser, versions.loser, &Row::loserBase);
    // What one side has just added may be what only the other one had.
    LinkEqual(&Row::winner, versions.winner, &Row::loser, versions.loser, &Row::winnerBase);
    LinkEqual(&Row::loser, versions.loser, &Row::winner, versions.winner, &Row::loserBase);
    Add(&Row::winner, versions.winner);
    Add(&Row::loser, versions.loser);
  }

  [[nodiscard]] const std::vector<Row>& rows() const { return rows_; }

 private:
  [[nodiscard]] bool IsLinked(RowSlot member, std::size_t slot) const {
    return std::ranges::any_of(rows_, [&](const Row& row) { return row.*member == slot; });
  }

  void Add(RowSlot member, const Slots& slots) {
    for (std::size_t i = 0; i < slots.size(); ++i) {
      if (slots[i].empty() || IsLinked(member, i)) continue;
      Row row;
      row.*member = i;
      rows_.push_back(row);
    }
  }

  // What both sides have and neither had.
  void AddCommon(const Slots& winner, const Slots& loser) {
    for (std::size_t i = 0; i < winner.size(); ++i) {
      if (winner[i].empty() || IsLinked(&Row::winner, i)) continue;
      for (std::size_t j = 0; j < loser.size(); ++j) {
        if (loser[j].empty() || IsLinked(&Row::loser, j)) continue;
        if (!SameText(winner[i], loser[j]) && !alike_(winner[i], loser[j])) continue;
        rows_.push_back({{}, i, {}, j});
        break;
      }
    }
  }

  // Gives entries to rows that have none in that version, by what they have in another one.
  template <typename Fits>
  void Link(RowSlot member, const Slots& slots, const Fits& fits) {
    for (std::size_t i = 0; i < slots.size(); ++i) {
      if (slots[i].empty() || IsLinked(member, i)) continue;
      const auto row = std::ranges::find_if(
          rows_, [&](const Row& each) { return !(each.*member) && fits(each, i); });
      if (row != rows_.end()) (*row).*member = i;
    }
  }

  // By the text. With a base given, in rows without it alone.
  void LinkEqual(RowSlot member, const Slots& slots, RowSlot known, const Slots& knownSlots,
                 RowSlot base = nullptr) {
    const auto isOpen = [&](const Row& row) {
      return row.*known && (base == nullptr || !(row.*base));
    };
    const auto equal = [&](const Row& row, std::size_t i) {
      return isOpen(row) && SameText(slots[i], knownSlots[*(row.*known)]);
    };
    Link(member, slots,
         [&](const Row& row, std::size_t i) { return row.*known == i && equal(row, i); });
    Link(member, slots, equal);
    Link(member, slots, [&](const Row& row, std::size_t i) {
      return isOpen(row) && alike_(slots[i], knownSlots[*(row.*known)]);
    });
  }

  // An entry that took the place of another is that one changed.
  void LinkInPlace(RowSlot member, const Slots& slots, RowSlot known) {
    Link(member, slots, [&](const Row& row, std::size_t i) { return row.*known == i; });
  }

  const Alike& alike_;
  std::vector<Row> rows_;
};

// What becomes of a row.
struct Outcome {
  Row row;
  Flow flow = Flow::kNone;
  std::string winnerText;  // empty for an entry that is not there
  std::string loserText;
};

std::vector<Outcome> OutcomesOf(const Versions<Slots>& versions, const Alike& alike) {
  const auto agree = [&](const std::string& a, const std::string& b) {
    return SameText(a, b) || (!a.empty() && !b.empty() && alike(a, b));
  };
  std::vector<Outcome> outcomes;
  const RowTable table(versions, alike);
  for (const Row& row : table.rows()) {
    Outcome outcome{row, Flow::kNone, TextIn(versions.winner, row.winner),
                    TextIn(versions.loser, row.loser)};
    outcome.flow =
        FlowOf(TextIn(versions.winnerBase, row.winnerBase), outcome.winnerText,
               TextIn(versions.loserBase, row.loserBase), outcome.loserText, SameText, agree);
    if (outcome.flow == Flow::kConflict && outcome.loserText.empty()) {
      outcome.flow = Flow::kToLoser;
    } else if (outcome.flow == Flow::kConflict && outcome.winnerText.empty()) {
      outcome.flow = Flow::kToWinner;
    }
    if (outcome.flow == Flow::kToWinner) outcome.winnerText = outcome.loserText;
    if (outcome.flow == Flow::kToLoser || outcome.flow == Flow::kConflict) {
      outcome.loserText = outcome.winnerText;
    }
    outcomes.push_back(std::move(outcome));
  }
  // Both sides came to have the same entry, each in a place of its own.
  for (Outcome& outcome : outcomes) {
    if (outcome.flow != Flow::kToWinner || outcome.winnerText.empty()) continue;
    const bool twice = std::ranges::any_of(outcomes, [&](const Outcome& other) {
      return other.flow == Flow::kToLoser && agree(other.loserText, outcome.winnerText);
    });
    if (!twice) continue;
    outcome.winnerText.clear();
    outcome.loserText.clear();
  }
  return outcomes;
}

// Puts entries into slots: first those that were there, then new ones.
class SlotFiller {
 public:
  explicit SlotFiller(std::size_t count) : filled_(count) {}

  bool Take(std::size_t slot, const std::string& text) {
    if (!filled_[slot].empty()) return false;
    filled_[slot] = text;
    return true;
  }
  bool TakeFirstFree(const std::string& text) {
    const auto free = std::ranges::find_if(filled_, &std::string::empty);
    if (free == filled_.end()) return false;
    *free = text;
    return true;
  }
  // Leaves no gap that `source`, where the entry comes from, does not have.
  bool TakeAsIn(const Slots& source, std::size_t slot, const std::string& text) {
    for (std::size_t i = 0; i < slot; ++i) {
      if (filled_[i].empty() && !source[i].empty()) return Take(i, text);
    }
    return Take(slot, text) || TakeFirstFree(text);
  }
  [[nodiscard]] Slots Taken() && { return std::move(filled_); }

 private:
  Slots filled_;
};

struct Wish {
  const std::string* text;
  std::size_t slot;
  const Slots* source;  // the version that gives the slot
  bool isNew;
  bool isWinners;
};

Wish WishOf(const Outcome& outcome, const Versions<Slots>& versions, bool forWinner) {
  const Row& row = outcome.row;
  bool winners = forWinner ? !row.movedByLoser() || row.movedByWinner() : row.movedByWinner();
  if (row.isNew()) winners = true;  // so that both sides have the same order
  if (!row.winner) winners = false;
  if (!row.loser) winners = true;
  const Slots& source = winners ? versions.winner : versions.loser;
  return {forWinner ? &outcome.winnerText : &outcome.loserText,
          winners ? row.winner.value_or(0) : row.loser.value_or(0), &source, row.isNew(),
          row.winner.has_value()};
}

// Nothing when they find no room.
std::optional<Slots> Placed(const std::vector<Outcome>& outcomes, const Versions<Slots>& versions,
                            bool forWinner) {
  std::vector<Wish> wishes;
  for (const Outcome& outcome : outcomes) {
    const Wish wish = WishOf(outcome, versions, forWinner);
    if (!wish.text->empty()) wishes.push_back(wish);
  }
  std::ranges::stable_sort(wishes, {}, [](const Wish& wish) {
    return std::tuple(wish.isNew, wish.isNew && !wish.isWinners, wish.slot);
  });
  SlotFiller filler(versions.winner.size());
  std::vector<const Wish*> pushedOut;
  for (const Wish& wish : wishes) {
    if (!wish.isNew && !filler.Take(wish.slot, *wish.text)) pushedOut.push_back(&wish);
  }
  for (const Wish* wish : pushedOut) {
    if (!filler.TakeFirstFree(*wish->text)) return std::nullopt;
  }
  for (const Wish& wish : wishes) {
    if (wish.isNew && !filler.TakeAsIn(*wish.source, wish.slot, *wish.text)) return std::nullopt;
  }
  return std::move(filler).Taken();
}

std::string Listed(const Slots& slots) {
  std::string list;
  for (const std::string& text : slots) {
    if (text.empty()) continue;
    if (!list.empty()) list += ", ";
    list += CommonText(text);
  }
  return list;
}

}  // namespace

void MergeNames(const Versions<std::vector<std::string>>& versions) {
  versions.winnerOut =
      WithChangesOf(versions.winnerBase, versions.winner, versions.loserBase, versions.loser);
  versions.loserOut =
      WithChangesOf(versions.loserBase, versions.loser, versions.winnerBase, versions.winner);
}

void MergeSlots(const Versions<Slots>& versions, const std::vector<std::string>& slotNames,
                const std::string& listName, const Alike& alike, MergeConflicts& conflicts) {
  if (versions.winner == versions.winnerBase && versions.loser == versions.loserBase) return;
  const std::vector<Outcome> outcomes = OutcomesOf(versions, alike);
  std::optional<Slots> forWinner = Placed(outcomes, versions, true);
  std::optional<Slots> forLoser = Placed(outcomes, versions, false);
  if (!forWinner || !forLoser) {
    versions.winnerOut = versions.winner;
    versions.loserOut = versions.winner;
    conflicts.push_back({listName, Listed(versions.winner), Listed(versions.loser)});
    return;
  }
  for (const Outcome& outcome : outcomes) {
    if (outcome.flow != Flow::kConflict) continue;
    const Row& row = outcome.row;
    const std::size_t slot = row.winner ? *row.winner : row.loser.value_or(0);
    conflicts.push_back({slotNames[slot], CommonText(TextIn(versions.winner, row.winner)),
                         CommonText(TextIn(versions.loser, row.loser))});
  }
  versions.winnerOut = *std::move(forWinner);
  versions.loserOut = *std::move(forLoser);
}

}  // namespace desktop
