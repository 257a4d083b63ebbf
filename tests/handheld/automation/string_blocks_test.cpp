#include "handheld/automation/string_blocks.h"

#include <gtest/gtest.h>

#include <cstring>
#include <thread>
#include <vector>

namespace ce::host {
namespace {

TEST(StringBlocks, AreEachOnesOwn) {
  std::vector<std::pair<char*, std::size_t>> blocks;
  for (int round = 0; round < 3; ++round) {
    for (std::size_t bytes = 10; bytes < 700; bytes += 3) {
      auto* const block = static_cast<char*>(StringBlocks::Allocate(bytes));
      ASSERT_NE(block, nullptr);
      std::memset(block, static_cast<int>(bytes % 251), bytes);
      blocks.emplace_back(block, bytes);
    }
    for (const auto& [block, bytes] : blocks) {
      EXPECT_EQ(std::string(block, bytes), std::string(bytes, static_cast<char>(bytes % 251)));
      StringBlocks::Free(block, bytes);
    }
    blocks.clear();
  }
}

TEST(StringBlocks, MayEndOnAnotherThread) {
  constexpr std::size_t kBytes = 50;
  std::vector<void*> blocks(100);
  std::thread([&] {
    for (void*& block : blocks) block = StringBlocks::Allocate(kBytes);
  }).join();
  for (void* block : blocks) StringBlocks::Free(block, kBytes);
}

// Frees a block when the thread's objects go, after what the thread keeps has gone.
struct FreedLast {
  void* block = nullptr;
  ~FreedLast() { StringBlocks::Free(block, 50); }
};

TEST(StringBlocks, MayEndWithTheirThread) {
  std::thread([] {
    thread_local FreedLast last;
    last.block = StringBlocks::Allocate(50);
    StringBlocks::Free(StringBlocks::Allocate(50), 50);
  }).join();
}

}  // namespace
}  // namespace ce::host
