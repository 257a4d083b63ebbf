// Where the identifiers of new items go on.
#pragma once

#include <cstdint>

#include "platform/host/outlook/store.h"
#include "platform/pocket_outlook.h"

namespace ce::host {

// Gives an identifier away, which no item of any kind has had. Within a write.
[[nodiscard]] HRESULT TakeOid(Store& store, std::uint32_t& oid);

// New items are numbered from `first` on. E_INVALIDARG for 0, and when that would give out an
// identifier a second time; E_FAIL when the application is not logged on.
[[nodiscard]] HRESULT StartOidsAt(IPOutlookApp* app, DWORD first);

}  // namespace ce::host
