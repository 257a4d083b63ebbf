// Local memory: the allocator whose blocks cross ownership boundaries.
#pragma once

#include "platform/types.h"

namespace ce {

inline constexpr UINT LMEM_FIXED = 0x00;
inline constexpr UINT LMEM_MOVEABLE = 0x02;
inline constexpr UINT LMEM_ZEROINIT = 0x40;

// Null and ERROR_NOT_ENOUGH_MEMORY on failure. A block of 0 bytes is a valid block.
// Sets the last error to 0 on success.
void* LocalAlloc(UINT flags, std::size_t bytes);
// Grows or shrinks, keeping the content; null on failure, which leaves the old block alive.
void* LocalReAlloc(void* block, std::size_t bytes, UINT flags);
// Null when freed. Freeing null is allowed.
void* LocalFree(void* block);

}  // namespace ce
