// The memory of the process.
#pragma once

#include <cstdint>

namespace ce::host {

// Keeps up to a mebibyte of freed memory a thread for what is allocated next: documents come and go
// by the chunk, and taking their pages from the system each time would cost more than reading them.
void KeepFreedMemory();

// Blocks of local memory that were given out and not yet freed.
std::int64_t LiveLocalBlocks();

}  // namespace ce::host
