// What a process holds of the system: descriptors, threads, memory.
#pragma once

#include <sys/types.h>

#include <cstddef>

namespace corvane::testing {

struct Holding {
  std::ptrdiff_t descriptors = 0;
  std::ptrdiff_t threads = 0;
};

Holding HeldBy(pid_t process);
// Connections that have ended are closed by and by: waits until no more is held than before, for a
// minute at most, and expects that.
void ExpectGivenBack(pid_t process, const Holding& before);

std::size_t ResidentBytes(pid_t process);
// How much of what was freed a sanitizer may hold back.
extern const std::size_t kHeldBackBytes;

}  // namespace corvane::testing
