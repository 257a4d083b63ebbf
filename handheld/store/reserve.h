// Room on the store's volume that is kept for deletions: what fills it can then be deleted.
#pragma once

#include <cstdint>
#include <filesystem>

namespace ce::host {

// As much as the write-ahead log grows to, twice: what lies there must fit into the database before
// the log's own room can be used again.
inline constexpr std::uint64_t kReserveBytes = std::uint64_t{8} << 20;

// Makes the file that holds the room, or makes it larger: of half of what is free at the most. That
// it cannot be made is no failure. Allocates nothing: it is what a store does last.
void KeepReserve(const std::filesystem::path& file);

// Gives the room back when there is less than that left on the volume; whether it did.
bool ReleaseReserve(const std::filesystem::path& file);

}  // namespace ce::host
