// Lists, three ways, by their entries.
#pragma once

#include <functional>
#include <string>
#include <vector>

#include "desktop/merge/field_merge.h"

namespace desktop {

// Names without an order, each once. What one side removed goes from the other one, unless that
// has just added it; what it added comes behind.
void MergeNames(const Versions<std::vector<std::string>>& versions);

// The texts of a number of slots, empty for a free one; of each version as many. No version has a
// text twice, or the second of them may be taken for another entry.
using Slots = std::vector<std::string>;
// Whether two texts mean the same entry.
using Alike = std::function<bool(const std::string&, const std::string&)>;

// An entry keeps its slot, unless a side has moved it; one that is new takes the slot that its side
// gave it, or else the first one that is free. One that a side removed and the other one changed
// stays as changed. One that both changed is a conflict, called slotNames[its slot]; and so is the
// whole list, called `listName`, when the entries of both find no room.
void MergeSlots(const Versions<Slots>& versions, const std::vector<std::string>& slotNames,
                const std::string& listName, const Alike& alike, MergeConflicts& conflicts);

}  // namespace desktop
