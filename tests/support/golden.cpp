#include "tests/support/golden.h"

#include <algorithm>
#include <cstdlib>
#include <fstream>
#include <iterator>

namespace corvane::testing {
namespace {

bool Updating() {
  const char* update = std::getenv("UPDATE_GOLDEN");
  return update && std::string(update) == "1";
}

std::string Around(const std::string& text, std::size_t position) {
  const std::size_t begin = position < 40 ? 0 : position - 40;
  return text.substr(std::min(begin, text.size()), 80);
}

}  // namespace

::testing::AssertionResult EqualsFile(const std::string& path, const std::string& actual) {
  if (Updating()) {
    std::ofstream file(path, std::ios::binary);
    file << actual;
    if (!file) return ::testing::AssertionFailure() << path << " cannot be written";
    return ::testing::AssertionSuccess();
  }
  std::ifstream file(path, std::ios::binary);
  if (!file) return ::testing::AssertionFailure() << path << " is missing (UPDATE_GOLDEN=1)";
  const std::string expected{std::istreambuf_iterator<char>(file), {}};
  if (expected == actual) return ::testing::AssertionSuccess();
  const auto [left, right] = std::ranges::mismatch(expected, actual);
  const auto position = static_cast<std::size_t>(left - expected.begin());
  return ::testing::AssertionFailure()
         << path << " differs at byte " << position << "\n  golden: " << Around(expected, position)
         << "\n  actual: " << Around(actual, position);
}

}  // namespace corvane::testing
