#include "tests/agent/device/ink_support.h"

#include <filesystem>
#include <fstream>

namespace corvane::testing {

void InkTest::MakeFile(const std::string& name, const std::string& content) {
  std::ofstream(handheld_->filesRoot() / name, std::ios::binary) << content;
}

bool InkTest::HasFile(const std::string& name) const {
  return std::filesystem::exists(handheld_.directory() / "files" / name);
}

}  // namespace corvane::testing
