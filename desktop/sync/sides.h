// What both sides have, as a synchronisation has read them.
#pragma once

#include <map>
#include <set>
#include <string>
#include <vector>

#include "desktop/folder/desk_item.h"
#include "desktop/sync/handheld_items.h"

namespace desktop {

// An item that a run before this one has put on one side, and not come to remember.
struct InFlight {
  ItemKind kind = ItemKind::kContact;
  std::string key;  // on the desk; or
  std::string uid;  // there
  Oid oid = 0;
  std::string state;       // StateHash of the record as it was sent; or
  std::string recordHash;  // of the record that was made a file of
  std::string made;        // the run that did
};

struct Sides {
  DeskFiles desk;
  std::set<std::string> unchanged;  // files of the desk that are as they were remembered
  std::map<ItemKind, std::vector<HandheldItem>> handheld;
};

}  // namespace desktop
