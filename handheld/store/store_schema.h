// The store's tables, and how a store comes to have them.
#pragma once

#include <string>

#include "platform/types.h"

struct sqlite3;

namespace ce::host {

// The store's format; PRAGMA user_version holds it.
inline constexpr int kStoreFormat = 4;
// PRAGMA application_id of every store.
inline constexpr int kStoreApplicationId = 0x43525653;
// A handheld's setting: not 0 once its store has been made. DWORD.
inline constexpr char16_t kStoreCreated[] = u"StoreCreated";
// Identifiers run to here.
inline constexpr std::int64_t kLastOid = 0xFFFFFFFF;

// Takes the database to kStoreFormat, an empty one from the beginning if it may be empty, in one
// transaction. Of one that has an older format a copy stays beside it, named after that:
// "store.db.format-3". On failure nothing has changed and `problem` says why.
[[nodiscard]] HRESULT BringUpToDate(sqlite3* database, bool mayBeEmpty, DWORD firstOid,
                                    std::string& problem);

// S_OK when the database is a store of exactly kStoreFormat.
[[nodiscard]] HRESULT CheckFormat(sqlite3* database, bool mayBeEmpty, std::string& problem);

}  // namespace ce::host
