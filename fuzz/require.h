// What must hold whatever the bytes are.
#pragma once

#include <cstdio>
#include <cstdlib>

namespace fuzz {

inline void Require(bool condition, const char* what = "see the stack") {
  if (condition) return;
  std::fprintf(stderr, "does not hold: %s\n", what);
  std::abort();
}

}  // namespace fuzz
