// The storage cards: directories of the root that are marked as temporary.
#pragma once

#include "platform/find_files.h"

namespace corvane {

// A search that stands on the first card, or INVALID_HANDLE_VALUE when there is none.
[[nodiscard]] ce::HANDLE FindFirstCard(ce::WIN32_FIND_DATAW* card);
// False when there is no other card; the search has been closed then.
[[nodiscard]] bool FindNextCard(ce::HANDLE search, ce::WIN32_FIND_DATAW* card);

ce::LONG GetCardCount();

// The path of the card with this number, counted from 0: a backslash and its name, cut to
// `characters` (2 or more) with the terminator. False, and the empty text, when there is no such
// card.
[[nodiscard]] bool GetCardPath(ce::LONG index, ce::WCHAR* path, ce::DWORD characters);

}  // namespace corvane
