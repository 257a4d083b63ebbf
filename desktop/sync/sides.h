// What both sides have, as a synchronisation has read them.
#pragma once

#include <map>
#include <string>
#include <unordered_set>
#include <vector>

#include "desktop/folder/desk_item.h"
#include "desktop/sync/handheld_items.h"

namespace desktop {

struct Sides {
  DeskFiles desk;
  std::unordered_set<std::string> unchanged;  // files of the desk that are as they were remembered
  std::map<ItemKind, std::vector<HandheldItem>> handheld;
};

}  // namespace desktop
