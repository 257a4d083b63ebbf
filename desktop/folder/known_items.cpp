#include "desktop/folder/known_items.h"

#include <fmt/format.h>

#include <algorithm>
#include <cstddef>
#include <functional>
#include <string_view>
#include <unordered_map>
#include <unordered_set>
#include <utility>

#include "common/text/text.h"

namespace desktop {
namespace {

constexpr const char* kKindWords[] = {"contact", "event", "task"};

const char* WordOf(const Item& item) {
  return kKindWords[static_cast<std::size_t>(KindOf(item))];
}

// What no two items have. The UID is the item's own.
struct Identity {
  ItemKind kind;
  std::string_view uid;
  friend bool operator==(const Identity&, const Identity&) = default;
};

struct IdentityHash {
  std::size_t operator()(const Identity& identity) const {
    return std::hash<std::string_view>()(identity.uid) + static_cast<std::size_t>(identity.kind);
  }
};

using ByIdentity = std::unordered_map<Identity, const DeskItem*, IdentityHash>;

Identity IdentityOf(const Item& item) {
  return {KindOf(item), UidOf(item)};
}

class KeyGiver {
 public:
  KeyGiver(DeskFiles& files, const DeskFiles& known, std::vector<DeskNotice>& notices)
      : files_(files), known_(known), notices_(notices) {}

  void Give() {
    if (std::ranges::none_of(files_, HasNew)) return;
    for (const auto& [path, file] : known_) {
      for (const DeskItem& item : file.items) {
        if (!UidOf(item.item).empty()) knownByUid_.emplace(IdentityOf(item.item), &item);
      }
    }
    LeaveRepeatedAlone();
    GiveByUid();
    for (auto& [path, file] : files_) GiveWithin(path, file);
    GiveByContent();
    for (auto& [path, file] : files_) GiveNew(path, file);
  }

 private:
  static bool HasNew(const DeskFiles::value_type& file) {
    return std::ranges::any_of(file.second.items,
                               [](const DeskItem& item) { return item.key.empty(); });
  }
  void LeaveRepeatedAlone();
  void GiveByUid();
  void GiveWithin(const std::string& path, DeskFile& file);
  void GiveByContent();
  void GiveNew(const std::string& path, DeskFile& file);
  void Carry(DeskItem& item, const DeskItem& known) {
    item.key = known.key;
    used_.insert(known.key);
  }
  // Those of the file that have no UID and were not found again.
  std::vector<const DeskItem*> UnfoundOf(const DeskFile& known) const;

  DeskFiles& files_;
  const DeskFiles& known_;
  std::vector<DeskNotice>& notices_;
  ByIdentity knownByUid_;
  std::unordered_set<std::string_view> used_;                    // keys
  std::unordered_map<std::string, std::vector<bool>> repeated_;  // by file, an entry an item
};

void KeyGiver::LeaveRepeatedAlone() {
  ByIdentity chosen;
  bool anyRepeated = false;
  for (const auto& [path, file] : files_) {
    for (const DeskItem& item : file.items) {
      if (UidOf(item.item).empty()) continue;
      const Identity identity = IdentityOf(item.item);
      const auto [at, isNew] = chosen.try_emplace(identity, &item);
      if (isNew) continue;
      anyRepeated = true;
      const auto known = knownByUid_.find(identity);
      const bool wasThis =
          !item.key.empty() || (known != knownByUid_.end() && known->second->file == item.file);
      if (wasThis && at->second->file != item.file) at->second = &item;
    }
  }
  if (!anyRepeated) return;
  for (auto& [path, file] : files_) {
    // What is pointed to stands in the files, so that nothing is moved before it was looked at.
    std::vector<bool> repeated;
    for (const DeskItem& item : file.items) {
      const DeskItem* kept = UidOf(item.item).empty() ? &item : chosen.at(IdentityOf(item.item));
      repeated.push_back(kept != &item);
      if (kept == &item) continue;
      notices_.push_back(
          {DeskTrouble::kLeftAlone, item.file, item.line,
           fmt::format("UID: {} stands in {}:{}, too; this one is left alone",
                       text::Excerpt(UidOf(item.item)), kept->file.string(), kept->line)});
    }
    if (std::find(repeated.begin(), repeated.end(), true) == repeated.end()) continue;
    file.stamp.clear();
    repeated_[path] = std::move(repeated);
  }
  for (const auto& [path, repeated] : repeated_) {
    std::vector<DeskItem> kept;
    std::vector<DeskItem>& items = files_.at(path).items;
    for (std::size_t i = 0; i < items.size(); ++i) {
      if (!repeated[i]) kept.push_back(std::move(items[i]));
    }
    items = std::move(kept);
  }
}

void KeyGiver::GiveByUid() {
  for (auto& [path, file] : files_) {
    for (DeskItem& item : file.items) {
      if (!item.key.empty()) used_.insert(item.key);
    }
  }
  for (auto& [path, file] : files_) {
    for (DeskItem& item : file.items) {
      if (!item.key.empty() || UidOf(item.item).empty()) continue;
      const auto known = knownByUid_.find(IdentityOf(item.item));
      if (known != knownByUid_.end() && !used_.contains(known->second->key)) {
        Carry(item, *known->second);
      }
    }
  }
}

std::vector<const DeskItem*> KeyGiver::UnfoundOf(const DeskFile& known) const {
  std::vector<const DeskItem*> unfound;
  for (const DeskItem& item : known.items) {
    if (UidOf(item.item).empty() && !used_.contains(item.key)) unfound.push_back(&item);
  }
  return unfound;
}

void KeyGiver::GiveWithin(const std::string& path, DeskFile& file) {
  const auto known = known_.find(path);
  if (known == known_.end()) return;
  std::vector<const DeskItem*> unfound = UnfoundOf(known->second);
  if (unfound.empty()) return;
  const auto giveBy = [&](const auto& nameOf) {
    std::unordered_multimap<std::string, const DeskItem*> names;
    // The last one put in is the first one found.
    for (auto item = unfound.rbegin(); item != unfound.rend(); ++item) {
      names.emplace(nameOf((*item)->item), *item);
    }
    for (DeskItem& item : file.items) {
      if (!item.key.empty()) continue;
      const auto found = names.find(nameOf(item.item));
      if (found == names.end()) continue;
      Carry(item, *found->second);
      names.erase(found);
    }
    unfound = UnfoundOf(known->second);
  };
  giveBy([](const Item& item) { return WordOf(item) + CommonHash(item); });
  giveBy([](const Item& item) { return WordOf(item) + DisplayName(item); });
  std::vector<DeskItem*> left;
  for (DeskItem& item : file.items) {
    if (item.key.empty()) left.push_back(&item);
  }
  const bool theOne = left.size() == 1 && unfound.size() == 1 &&
                      KindOf(left.front()->item) == KindOf(unfound.front()->item);
  if (theOne) Carry(*left.front(), *unfound.front());
}

// A file that was given another name.
void KeyGiver::GiveByContent() {
  std::unordered_multimap<std::string, const DeskItem*> lost;
  for (const auto& [path, file] : known_) {
    for (const DeskItem* item : UnfoundOf(file)) {
      lost.emplace(WordOf(item->item) + CommonHash(item->item), item);
    }
  }
  if (lost.empty()) return;
  for (auto& [path, file] : files_) {
    for (DeskItem& item : file.items) {
      if (!item.key.empty()) continue;
      const auto found = lost.find(WordOf(item.item) + CommonHash(item.item));
      if (found == lost.end()) continue;
      Carry(item, *found->second);
      lost.erase(found);
    }
  }
}

void KeyGiver::GiveNew(const std::string& path, DeskFile& file) {
  std::size_t number = 0;
  for (DeskItem& item : file.items) {
    if (!item.key.empty()) continue;
    if (!UidOf(item.item).empty()) item.key = KeyOf(item.item);
    while (item.key.empty() || used_.contains(item.key)) {
      item.key = fmt::format("{}@{}#{}", WordOf(item.item), path, ++number);
    }
    used_.insert(item.key);
  }
}

}  // namespace

std::string KeyOf(const Item& item) {
  return fmt::format("{}:{}", WordOf(item), UidOf(item));
}

void GiveKeys(DeskFiles& files, const DeskFiles& known, std::vector<DeskNotice>& notices) {
  KeyGiver(files, known, notices).Give();
}

}  // namespace desktop
