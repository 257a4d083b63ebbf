// A folder, a handheld with a store, and synchronisations of the two.
#pragma once

#include <gtest/gtest.h>

#include <filesystem>
#include <functional>
#include <map>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "desktop/folder/desk_folder.h"
#include "desktop/sync/handheld_items.h"
#include "desktop/sync/sync_run.h"
#include "tests/desktop/push_fixture.h"

namespace desktop::testing {

// An item of a kind with a name that tells it from others, and two texts that people edit. What a
// kind has no second text for is left out.
struct TestItem {
  std::string name;
  std::string first;
  std::string second;
  friend auto operator<=>(const TestItem&, const TestItem&) = default;
};
void PrintTo(const TestItem& item, std::ostream* stream);
bool HasSecond(ItemKind kind);
Item ItemFrom(ItemKind kind, const TestItem& test);
TestItem TestItemFrom(const Item& item);

inline constexpr ItemKind kItemKinds[] = {ItemKind::kContact, ItemKind::kAppointment,
                                          ItemKind::kTask};

// What a test sees of a run.
struct SyncSeen {
  std::vector<std::string> planned;  // the lines of the plan
  std::vector<std::string> notices;
  SyncResults results;
  bool ended = false;  // the sides could be read
  std::string problem;
};

class SyncWorld {
 public:
  SyncWorld() { options_.folder = directory_ / "desk"; }

  // As a person's program writes, changes and removes it there. What is changed or removed must be
  // there as `item`.
  void AddOnDesk(ItemKind kind, const TestItem& item);
  void ChangeOnDesk(ItemKind kind, const TestItem& item, const TestItem& to);
  void RemoveFromDesk(ItemKind kind, const TestItem& item);
  void RenameFileOnDesk(ItemKind kind, const TestItem& item);
  // As a person does it on the handheld.
  void AddOnHandheld(ItemKind kind, const TestItem& item);
  void ChangeOnHandheld(ItemKind kind, const TestItem& item, const TestItem& to);
  void RemoveFromHandheld(ItemKind kind, const TestItem& item);

  // Sorted.
  std::vector<TestItem> Desk(ItemKind kind) const;
  std::vector<TestItem> Handheld(ItemKind kind) const;
  // All bytes of the desk's items by the names of their files, and the handheld's records.
  std::map<std::string, std::string> Bytes() const;
  // All that is in the folder.
  std::map<std::string, std::string> FolderBytes() const;

  // The agent goes away midway, after as many answers.
  SyncSeen Sync(std::size_t mostAnswers = SIZE_MAX);

  TemporaryDirectory directory_;
  SyncOptions options_ = Options();
  Store store_;

 private:
  static SyncOptions Options();
  std::vector<DeskItem> DeskItems(ItemKind kind) const;
  DeskItem FindOnDesk(ItemKind kind, const TestItem& item) const;
  Oid FindOnHandheld(ItemKind kind, const TestItem& item) const;
  std::map<Oid, Item> HandheldItems(ItemKind kind) const;
  void WriteFile(const std::filesystem::path& file, const Item& item) const;

  std::size_t files_ = 0;
  Oid nextOid_ = 1;
};

}  // namespace desktop::testing
