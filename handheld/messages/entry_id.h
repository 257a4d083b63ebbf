// The entry identifiers that the handheld makes.
#pragma once

#include <array>
#include <cstdint>

#include "platform/types.h"

namespace ce::host {

using EntryId = std::array<BYTE, 20>;

// Four zero bytes, then most significant byte first: the object's type (MAPI_STORE, MAPI_FOLDER,
// MAPI_MESSAGE; four bytes), its store's number (four) and its own (eight). So identifiers made one
// after another lie beside each other in the store's index.
EntryId MakeEntryId(DWORD objectType, std::int64_t store, std::int64_t id);

}  // namespace ce::host
