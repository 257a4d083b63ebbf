// Lets a call to the system go wrong in one of the programs, by the library that is loaded before
// its others.
#pragma once

#include <cstdint>
#include <string>
#include <utility>
#include <vector>

namespace corvane::testing {

// What goes wrong, in the words of the library's settings.
struct Fault {
  std::string calls;  // "writes", "room", "files", "sockets", "memory", "locks", "conversions"
  std::string how;    // "kill", "half", "fail" or "fail-on"
  int error = 0;      // for the last two
};
// In these words.
std::string NameOf(const Fault& fault);

// The library under the variables that let the n-th call go wrong (0 for none) for files below
// `directory`; `told` is the file that is told what happened.
std::vector<std::pair<std::string, std::string>> ShimEnvironment(const Fault& fault,
                                                                 std::uint64_t n,
                                                                 const std::string& directory,
                                                                 const std::string& told);

// Which of so many calls are to go wrong: all of them in the long form (CORVANE_SWEEP_ALL), but
// three hundred at most; otherwise so few, spread over them, and fewer with a sanitizer.
std::vector<std::uint64_t> PointsAmong(std::uint64_t calls, std::uint64_t few);

}  // namespace corvane::testing
