// What a synchronisation is to come to, in as few words as it can be said.
#pragma once

#include <algorithm>
#include <optional>
#include <string>
#include <vector>

#include "desktop/sync/planner.h"
#include "tests/desktop/sync/sync_fixture.h"

namespace desktop::testing {

// An item on either side, and what both agreed on; nothing for a side that it is not on.
struct ModelItem {
  std::optional<TestItem> desk, handheld, base;
};

class SyncModel {
 public:
  explicit SyncModel(ItemKind kind) : kind_(kind) {}

  std::vector<ModelItem> items;

  [[nodiscard]] std::vector<TestItem> Side(std::optional<TestItem> ModelItem::*side) const {
    std::vector<TestItem> all;
    for (const ModelItem& item : items) {
      if (item.*side) all.push_back(*(item.*side));
    }
    std::ranges::sort(all);
    return all;
  }

  void Sync(ConflictPolicy policy) {
    std::vector<ModelItem> copies;
    for (ModelItem& item : items) {
      if (item.desk && item.handheld) {
        Merge(item, policy, copies);
      } else {
        // Of one side alone: new or changed there, or deleted on the other one.
        const std::optional<TestItem> there = item.desk ? item.desk : item.handheld;
        item = there == item.base ? ModelItem{} : ModelItem{there, there, there};
      }
    }
    items.insert(items.end(), copies.begin(), copies.end());
    std::erase_if(items, [](const ModelItem& item) { return !item.desk && !item.handheld; });
  }

 private:
  void Merge(ModelItem& item, ConflictPolicy policy, std::vector<ModelItem>& copies) const {
    TestItem deskWins = *item.desk;
    TestItem handheldWins = *item.handheld;
    bool conflict = false;
    const TestItem base = item.base.value_or(TestItem{});
    for (std::string TestItem::*field : {&TestItem::first, &TestItem::second}) {
      const bool byDesk = (*item.desk).*field != base.*field;
      const bool byHandheld = (*item.handheld).*field != base.*field;
      if (byDesk && byHandheld) {
        conflict = conflict || (*item.desk).*field != (*item.handheld).*field;
      } else {
        deskWins.*field = handheldWins.*field =
                              byDesk ? (*item.desk).*field : (*item.handheld).*field;
      }
    }
    if (conflict && policy == ConflictPolicy::kAsk) return;
    if (conflict && policy == ConflictPolicy::kKeepBoth) {
      std::string& note = HasSecond(kind_) ? handheldWins.second : handheldWins.first;
      note += (note.empty() ? "" : "\n") + std::string(kCopyMark);
      copies.push_back({handheldWins, handheldWins, handheldWins});
    }
    const TestItem& merged = policy == ConflictPolicy::kHandheld ? handheldWins : deskWins;
    item = {merged, merged, merged};
  }

  ItemKind kind_;
};

}  // namespace desktop::testing
