#include "tests/support/wire/agent_holding.h"

#include <gtest/gtest.h>

#include <chrono>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <string>
#include <thread>

#include "tests/support/sanitizers.h"

namespace corvane::testing {
namespace {

std::string FilesOf(pid_t process) {
  return "/proc/" + std::to_string(process) + "/";
}

std::ptrdiff_t EntriesIn(const std::string& directory) {
  return std::distance(std::filesystem::directory_iterator(directory), {});
}

}  // namespace

const std::size_t kHeldBackBytes = kAddressSanitizer || kThreadSanitizer ? 256 << 20 : 0;

Holding HeldBy(pid_t process) {
  return {EntriesIn(FilesOf(process) + "fd"), EntriesIn(FilesOf(process) + "task")};
}

void ExpectGivenBack(pid_t process, const Holding& before) {
  const auto end = std::chrono::steady_clock::now() + std::chrono::seconds(60);
  Holding held = HeldBy(process);
  while ((held.descriptors > before.descriptors || held.threads > before.threads) &&
         std::chrono::steady_clock::now() < end) {
    std::this_thread::yield();
    held = HeldBy(process);
  }
  EXPECT_LE(held.descriptors, before.descriptors);
  EXPECT_LE(held.threads, before.threads);
}

std::size_t ResidentBytes(pid_t process) {
  std::ifstream pages(FilesOf(process) + "statm");
  std::size_t all = 0;
  std::size_t resident = 0;
  EXPECT_TRUE(pages >> all >> resident);
  return resident * 4096;
}

}  // namespace corvane::testing
