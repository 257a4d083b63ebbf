// How much a file of records holds.
#pragma once

#include <cstddef>
#include <string_view>

#include "desktop/records/record_kind.h"

namespace desktop {

// The records in a file of that format, which a pull writes; of what cannot be understood as one,
// none.
std::size_t CountRecords(std::string_view bytes, RecordFormat format);

}  // namespace desktop
