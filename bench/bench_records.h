// Records as a desktop would upload them, made by number, and what a telephone leaves.
#pragma once

#include <cstdint>
#include <filesystem>
#include <string>

namespace ce::host {
class Handheld;
}

namespace bench {

// Of an upload's chunk, unless it is about something else.
inline constexpr int kRecordsPerChunk = 50;

struct Workload {
  const char* name;
  std::uint32_t kind;   // of the download request
  const char* element;  // of a record
  // A record to upload; null for what only the handheld itself makes.
  std::string (*record)(int number);
  void (*fill)(ce::host::Handheld& handheld, int count) = nullptr;
};

// People with eighteen fields.
extern const Workload kContacts;
// Every second one recurs, with one occurrence changed and one deleted.
extern const Workload kAppointments;
// A daily series with 3,000 exceptions each, every second one a deletion.
extern const Workload kLongSeries;
extern const Workload kTasks;
// In twenty folders.
extern const Workload kMessages;
extern const Workload kCalls;

// Records 1 to `count` as an upload's chunks; see chunk_file.h. Both throw std::ios::failure.
void WriteChunks(const std::filesystem::path& path, const Workload& workload, int count,
                 int recordsPerChunk);
// The same people as kContacts makes, as vCards.
void WriteVCards(const std::filesystem::path& path, int count);

}  // namespace bench
