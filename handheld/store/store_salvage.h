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
// `damaged`, a copy that nobody else uses: opening it may change it. Where a table cannot be read
// on in its order, its rows are asked for one by one. Losses are named by the numbers of the rows
// as far as the table or an index of it still has them, else as those of a table. What hung on a
// lost row finds another place or goes with it. Identifiers stay, and those that are known to have
// been given away are not given away again. On failure, as when nothing can be told from the
// database at all, `problem` says why.
[[nodiscard]] HRESULT SalvageStore(const std::filesystem::path& damaged,
                                   const std::filesystem::path& fresh, Salvage& salvage,
                                   std::string& problem);

}  // namespace ce::host
