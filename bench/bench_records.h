// Records as a desktop would upload them, made by number, and what a telephone leaves.
#pragma once

#include <cstdint>
#include <string>

namespace ce::host {
class Handheld;
}

namespace bench {

struct Workload {
  const char* name;
  std::uint32_t kind;   // of the download and delete requests
  const char* element;  // of a record
  // A record to upload; null for what only the handheld itself makes.
  std::string (*record)(int number);
  void (*fill)(ce::host::Handheld& handheld, int count) = nullptr;
  bool canBeDeleted = true;
};

// People with eighteen fields.
extern const Workload kContacts;
// Every second one recurs, with one occurrence changed and one deleted.
extern const Workload kCalendar;
extern const Workload kTasks;
// In twenty folders.
extern const Workload kMessages;
extern const Workload kCalls;

}  // namespace bench
