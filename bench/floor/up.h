// The floors of the uploads: the chunks parsed into a tree, the same rows as the agent's inserted
// by statements prepared once, a fully synchronised transaction a chunk. Nothing travels.
#pragma once

#include <string_view>

#include "bench/chunk_file.h"
#include "bench/floor/database.h"

namespace floors {

// Of an empty store. `kind` is "contacts" or "appointments", whose every series has a number of
// occurrences and is daily, or weekly on one day, as the workloads' are.
void InsertAll(Database& store, std::string_view kind, const bench::ChunkFile& chunks);

}  // namespace floors
