// fuzz_feed TARGET FILE: feeds the file to the target once, for a debugger or a counter of
// instructions.
#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <string>
#include <string_view>

#include "common/files/atomic_file.h"

// CORVANE_FUZZ_TARGETS is X(target) for each.
#define X(target) extern "C" int target##_fuzz(const std::uint8_t*, std::size_t);
CORVANE_FUZZ_TARGETS
#undef X

int main(int argc, char** argv) {
  if (argc != 3) {
    std::fputs("fuzz_feed: a target and a file\n", stderr);
    return 2;
  }
  const std::string bytes = files::ReadWholeFile(argv[2]);
  const auto* data = reinterpret_cast<const std::uint8_t*>(bytes.data());
#define X(target) \
  if (std::string_view(argv[1]) == #target) return target##_fuzz(data, bytes.size());
  CORVANE_FUZZ_TARGETS
#undef X
  std::fprintf(stderr, "fuzz_feed: no target \"%s\"\n", argv[1]);
  return 2;
}
