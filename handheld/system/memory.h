// What tests ask of local memory.
#pragma once

#include <cstdint>

namespace ce::host {

// Blocks that were given out and not yet freed.
std::int64_t LiveLocalBlocks();

}  // namespace ce::host
