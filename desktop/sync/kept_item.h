// Items as the memory keeps them: every field, whatever a wire or a file could say.
#pragma once

#include <string>
#include <string_view>

#include "desktop/merge/item.h"

namespace desktop {

std::string KeptItem(const Item& item);

// Throws Error for bytes that KeptItem has not written.
Item ItemFromKept(std::string_view bytes);

}  // namespace desktop
