// Records as a desktop would upload them, made by number.
#pragma once

#include <cstdint>
#include <string>

namespace bench {

struct Workload {
  const char* name;
  std::uint32_t kind;   // of the download and delete requests
  const char* element;  // of a record
  std::string (*record)(int number);
};

// People with eighteen fields.
extern const Workload kContacts;
// Every second one recurs, with one occurrence changed and one deleted.
extern const Workload kCalendar;
extern const Workload kTasks;

}  // namespace bench
