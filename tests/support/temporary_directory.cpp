#include "tests/support/temporary_directory.h"

#include <stdlib.h>
#include <unistd.h>

#include <fstream>
#include <iterator>
#include <stdexcept>
#include <system_error>

namespace corvane::testing {
namespace {

namespace fs = std::filesystem;

// In memory, so that durability costs nothing.
fs::path TemporaryRoot() {
  const fs::path memory = "/dev/shm";
  std::error_code ignored;
  if (fs::is_directory(memory, ignored) && ::access(memory.c_str(), W_OK | X_OK) == 0) {
    return memory;
  }
  return fs::temp_directory_path();
}

}  // namespace

TemporaryDirectory::TemporaryDirectory() {
  std::string pattern = (TemporaryRoot() / "corvane-test-XXXXXX").string();
  if (!::mkdtemp(pattern.data())) throw std::runtime_error("no directory for the test: " + pattern);
  path_ = pattern;
}

TemporaryDirectory::~TemporaryDirectory() {
  std::error_code ignored;
  fs::remove_all(path_, ignored);
}

std::string TemporaryDirectory::Read(const fs::path& name) const {
  std::ifstream file(path_ / name, std::ios::binary);
  return {std::istreambuf_iterator<char>(file), {}};
}

void TemporaryDirectory::Write(const fs::path& name, std::string_view content) const {
  std::ofstream file(path_ / name, std::ios::binary | std::ios::trunc);
  file << content;
  if (!file.flush()) throw std::runtime_error("the test's file cannot be written");
}

}  // namespace corvane::testing
