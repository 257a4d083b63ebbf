// Local memory of the virtual handheld.
#pragma once

#include "platform/memory.h"

namespace ce::host {

// A block may have this many bytes unless the handheld's settings say otherwise.
inline constexpr DWORD kDefaultMaxBlock = 256u << 20;

// The bound on blocks is read from the current handheld's settings once and then remembered. To be
// called whenever another handheld has become the current one or its settings have changed.
void ForgetBlockBound();

}  // namespace ce::host
