// CATEGORIES of a vCard, event or task, as a handheld takes names.
#pragma once

#include <string>
#include <vector>

#include "common/formats/lines/notice_list.h"
#include "common/formats/lines/vcard_property.h"

namespace formats {

// The property's names, none empty, none with a comma: one that has some is kept with semicolons
// and noticed.
std::vector<std::string> CategoriesOf(const Property& property, NoticeList& notices);

// Keeps the first of each.
void RemoveRepeated(std::vector<std::string>& names);

}  // namespace formats
