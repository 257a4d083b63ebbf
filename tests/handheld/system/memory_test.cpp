#include "platform/memory.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstring>
#include <limits>

#include "handheld/base/fault.h"
#include "handheld/directory/handheld.h"
#include "platform/status.h"
#include "tests/support/test_handheld.h"

namespace corvane::testing {
namespace {

using ce::host::FaultPlan;

bool AllZero(const void* block, std::size_t bytes) {
  const auto* first = static_cast<const ce::BYTE*>(block);
  return std::all_of(first, first + bytes, [](ce::BYTE byte) { return byte == 0; });
}

class LocalMemory : public HandheldTest {
 protected:
  void SetBound(ce::DWORD bytes) { handheld_->Set(ce::host::setting::kMaxBlock, bytes); }
};

TEST_F(LocalMemory, SetsTheLastErrorTo0OnSuccess) {
  ce::SetLastError(5);
  void* block = ce::LocalAlloc(ce::LMEM_FIXED, 10);
  EXPECT_NE(block, nullptr);
  EXPECT_EQ(ce::GetLastError(), ce::ERROR_SUCCESS);
  ce::SetLastError(5);
  block = ce::LocalReAlloc(block, 20, ce::LMEM_MOVEABLE);
  EXPECT_NE(block, nullptr);
  EXPECT_EQ(ce::GetLastError(), ce::ERROR_SUCCESS);
  EXPECT_EQ(ce::LocalFree(block), nullptr);
}

TEST_F(LocalMemory, GivesABlockOfNoBytes) {
  void* block = ce::LocalAlloc(ce::LMEM_FIXED, 0);
  EXPECT_NE(block, nullptr);
  block = ce::LocalReAlloc(block, 3, ce::LMEM_MOVEABLE);
  ASSERT_NE(block, nullptr);
  std::memcpy(block, "abc", 3);
  block = ce::LocalReAlloc(block, 0, ce::LMEM_MOVEABLE);
  EXPECT_NE(block, nullptr);
  ce::LocalFree(block);
}

TEST_F(LocalMemory, AlignsBlocksForAnyType) {
  void* block = ce::LocalAlloc(ce::LMEM_FIXED, 1);
  EXPECT_EQ(reinterpret_cast<std::uintptr_t>(block) % alignof(std::max_align_t), 0u);
  ce::LocalFree(block);
}

TEST_F(LocalMemory, IsZeroWhenAskedFor) {
  void* block = ce::LocalAlloc(ce::LMEM_ZEROINIT, 4096);
  EXPECT_TRUE(AllZero(block, 4096));
  ce::LocalFree(block);
}

TEST_F(LocalMemory, KeepsItsContentWhenItGrowsOrShrinks) {
  void* block = ce::LocalAlloc(ce::LMEM_FIXED, 4);
  std::memcpy(block, "abcd", 4);
  block = ce::LocalReAlloc(block, 1 << 20, ce::LMEM_MOVEABLE | ce::LMEM_ZEROINIT);
  ASSERT_NE(block, nullptr);
  EXPECT_EQ(std::memcmp(block, "abcd", 4), 0);
  EXPECT_TRUE(AllZero(static_cast<char*>(block) + 4, (1 << 20) - 4));
  block = ce::LocalReAlloc(block, 2, ce::LMEM_MOVEABLE);
  ASSERT_NE(block, nullptr);
  EXPECT_EQ(std::memcmp(block, "ab", 2), 0);
  ce::LocalFree(block);
}

TEST_F(LocalMemory, FreesNothing) {
  EXPECT_EQ(ce::LocalFree(nullptr), nullptr);
}

TEST_F(LocalMemory, DoesNotGrowWhatIsNoBlock) {
  EXPECT_EQ(ce::LocalReAlloc(nullptr, 10, ce::LMEM_MOVEABLE), nullptr);
  EXPECT_EQ(ce::GetLastError(), ce::ERROR_INVALID_HANDLE);
}

TEST_F(LocalMemory, IsBoundedByTheHandheldsSetting) {
  SetBound(1000);
  void* block = ce::LocalAlloc(ce::LMEM_FIXED, 1000);
  ASSERT_NE(block, nullptr);
  std::memset(block, 'x', 1000);
  EXPECT_EQ(ce::LocalAlloc(ce::LMEM_FIXED, 1001), nullptr);
  EXPECT_EQ(ce::GetLastError(), ce::ERROR_NOT_ENOUGH_MEMORY);
  EXPECT_EQ(ce::LocalReAlloc(block, 1001, ce::LMEM_MOVEABLE), nullptr);
  EXPECT_EQ(ce::GetLastError(), ce::ERROR_NOT_ENOUGH_MEMORY);
  EXPECT_EQ(static_cast<char*>(block)[999], 'x') << "the old block lives on";
  ce::LocalFree(block);
}

TEST_F(LocalMemory, FollowsAChangedSetting) {
  SetBound(10);
  EXPECT_EQ(ce::LocalAlloc(ce::LMEM_FIXED, 11), nullptr);
  SetBound(11);
  void* block = ce::LocalAlloc(ce::LMEM_FIXED, 11);
  EXPECT_NE(block, nullptr);
  ce::LocalFree(block);
}

TEST_F(LocalMemory, IsBoundedBy256MiBOfItself) {
  EXPECT_EQ(ce::LocalAlloc(ce::LMEM_FIXED, (256u << 20) + 1), nullptr);
  EXPECT_EQ(ce::GetLastError(), ce::ERROR_NOT_ENOUGH_MEMORY);
  EXPECT_EQ(ce::LocalAlloc(ce::LMEM_FIXED, std::numeric_limits<std::size_t>::max()), nullptr);
  EXPECT_EQ(ce::GetLastError(), ce::ERROR_NOT_ENOUGH_MEMORY);
}

TEST(LocalAlloc, TakesTheDefaultBoundWithoutAHandheld) {
  EXPECT_EQ(ce::LocalAlloc(ce::LMEM_FIXED, (256u << 20) + 1), nullptr);
  void* block = ce::LocalAlloc(ce::LMEM_FIXED, 1);
  EXPECT_NE(block, nullptr);
  ce::LocalFree(block);
}

TEST_F(LocalMemory, FailsOnPurpose) {
  void* block = ce::LocalAlloc(ce::LMEM_FIXED, 4);
  {
    const FaultPlan plan = FaultPlan::FailCalls("LocalReAlloc", ce::ERROR_NOT_ENOUGH_MEMORY);
    EXPECT_EQ(ce::LocalReAlloc(block, 8, ce::LMEM_MOVEABLE), nullptr);
    EXPECT_EQ(ce::GetLastError(), ce::ERROR_NOT_ENOUGH_MEMORY);
  }
  ce::LocalFree(block);
  const FaultPlan plan = FaultPlan::FailCalls("LocalAlloc", ce::ERROR_NOT_ENOUGH_MEMORY);
  EXPECT_EQ(ce::LocalAlloc(ce::LMEM_FIXED, 4), nullptr);
  EXPECT_EQ(ce::GetLastError(), ce::ERROR_NOT_ENOUGH_MEMORY);
}

}  // namespace
}  // namespace corvane::testing
