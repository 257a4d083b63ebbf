// Where the identifiers of new items go on.
#pragma once

#include <cstdint>

#include "handheld/store/store.h"

namespace ce::host {

// Gives an identifier away, which no item of any kind has had. Within a write.
[[nodiscard]] HRESULT TakeOid(Store& store, std::uint32_t& oid);

// New items are numbered from `first` on. E_INVALIDARG for 0, and when that would give out an
// identifier a second time.
[[nodiscard]] HRESULT StartOidsAt(Store& store, DWORD first);

}  // namespace ce::host
