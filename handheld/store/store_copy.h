// Copies of a store's database.
#pragma once

#include <filesystem>

#include "platform/types.h"

struct sqlite3;

namespace ce::host {

// Copies the database as it is at one moment, whoever writes to it meanwhile, to a new file in the
// place of one that may be there. The copy is for its owner alone and on the disk on return; on
// failure what was there stays.
[[nodiscard]] HRESULT CopyDatabase(sqlite3* database, const std::filesystem::path& to);

}  // namespace ce::host
