// The handheld's clock, as new items and stamps are set by it.
#pragma once

#include <optional>

#include "handheld/store/ole_date.h"

namespace ce::host {

// Local time, without fractions of a second, moved into the years that items' dates have; nothing
// when the clock cannot be read.
std::optional<local_seconds> ItemClock();

}  // namespace ce::host
