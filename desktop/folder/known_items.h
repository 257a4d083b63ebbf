// Which item is which, from one reading of a folder to the next.
#pragma once

#include <string>
#include <vector>

#include "desktop/folder/desk_item.h"

namespace desktop {

// The key of an item with a UID that was not known before.
std::string KeyOf(const Item& item);

// Gives the items of `files` that have no key yet the one that they had in `known`, or a new one.
// An item is known again by its UID, wherever it stands; without one by its content, by its name in
// the same file, or as the one item of its file. Of several with one UID the one that was known
// stays, else the first; the others are taken out and noticed, and their files are to be read again
// next time.
void GiveKeys(DeskFiles& files, const DeskFiles& known, std::vector<DeskNotice>& notices);

}  // namespace desktop
