// What fuzzing has found and what it starts from, fed to its targets once more.
#include <gtest/gtest.h>

#include <cstddef>
#include <cstdint>
#include <filesystem>
#include <string>

#include "common/files/atomic_file.h"
#include "tests/support/paths.h"

// CORVANE_FUZZ_TARGETS is X(target) for each.
#define X(target) extern "C" int target##_fuzz(const std::uint8_t*, std::size_t);
CORVANE_FUZZ_TARGETS
#undef X

namespace {

using Target = int (*)(const std::uint8_t*, std::size_t);

// A target ends the process where something does not hold.
void Replay(const std::string& name, Target target) {
  int inputs = 0;
  const auto corpus = corvane::testing::SourcePath("fuzz/corpus/" + name);
  for (const auto& entry : std::filesystem::directory_iterator(corpus)) {
    const std::string bytes = files::ReadWholeFile(entry.path());
    EXPECT_EQ(target(reinterpret_cast<const std::uint8_t*>(bytes.data()), bytes.size()), 0)
        << entry.path();
    ++inputs;
  }
  EXPECT_GT(inputs, 0) << "nothing is kept in " << corpus;
}

#define X(target)                   \
  TEST(FuzzCorpus, target) {        \
    Replay(#target, target##_fuzz); \
  }
CORVANE_FUZZ_TARGETS
#undef X

}  // namespace
