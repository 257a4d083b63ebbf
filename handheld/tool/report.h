// Where a command of corvane-device says what it did.
#pragma once

#include <cstdio>
#include <string_view>

namespace tool {

// What a command ends with; the program's exit code.
enum class Outcome { kDone = 0, kFailed = 1, kPartlyDone = 3 };

// Results go to `out`; errors and notices to `err`, as lines "corvane-device: …" or "FILE:LINE: …".
struct Report {
  std::FILE* out = stdout;
  std::FILE* err = stderr;
};

}  // namespace tool
