// A desktop that costs as little as it can, so that what it measures is the other end. All throw
// std::runtime_error when the other end does not do its part.
#pragma once

#include <cstdint>
#include <string>

#include "bench/bench_records.h"
#include "bench/chunk_file.h"

namespace bench {

// Receives all records of a kind and drops them; how many bytes there were.
std::uint64_t DrainDownload(std::uint16_t port, const Workload& workload);
// The same, kept.
std::string ReadDownload(std::uint16_t port, const Workload& workload);

// Sends each chunk when the one before has been answered. The last chunk holds what is left of
// `count`, every other one `recordsPerChunk`.
void UploadChunks(std::uint16_t port, const ChunkFile& chunks, int count, int recordsPerChunk);

// "CVCeGetSystemTime", a connection each; in all `count` times by that many threads.
void AskTheTime(std::uint16_t port, int threads, int count);

}  // namespace bench
