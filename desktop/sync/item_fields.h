// What of an item is otherwise than it was.
#pragma once

#include <string>
#include <vector>

#include "desktop/merge/item.h"

namespace desktop {

// The names of the fields in which two items of one kind are not the same, in the common form.
std::vector<std::string> DifferentFields(const Item& a, const Item& b);

// "Body, Categories".
std::string Listed(const std::vector<std::string>& names);

}  // namespace desktop
