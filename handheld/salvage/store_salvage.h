// What can still be read of a damaged store.
#pragma once

#include <cstdint>
#include <filesystem>
#include <string>
#include <utility>
#include <vector>

#include "platform/types.h"

namespace ce::host {

struct Salvage {
  std::vector<std::pair<std::string, std::uint64_t>> saved;  // tables and their rows, if any
  std::vector<std::string> lost;  // one line each, the last says how many more
};

// Makes a store at `fresh`, where nothing may be, of all rows that can be read of the database
// `damaged`, a copy that nobody else uses: what its log holds is moved into it. Rows are found by
// what they look like; their trees say which are missing. Losses are named by the numbers that the
// rows had, as far as there were any. What hung on a lost row finds another place or goes with it.
// Identifiers stay, and none that is known to have been given away is given away again. A newer
// store, or another program's database, is left alone. On failure, as when nothing can be told from
// the database at all, `problem` says why.
[[nodiscard]] HRESULT SalvageStore(const std::filesystem::path& damaged,
                                   const std::filesystem::path& fresh, Salvage& salvage,
                                   std::string& problem);

}  // namespace ce::host
