#include "handheld/base/handle_table.h"

#include <gtest/gtest.h>

#include <set>
#include <thread>
#include <vector>

#include "platform/registry.h"

namespace corvane {
namespace {

using ce::HANDLE;
using ce::host::HandleObject;
using ce::host::HandleTable;

struct Flagged : HandleObject {
  explicit Flagged(bool& ended) : gone(ended) {}
  ~Flagged() override { gone = true; }
  bool& gone;
};

TEST(HandleTable, FindsWhatWasAddedUntilItIsClosed) {
  HandleTable table;
  bool gone = false;
  const HANDLE handle = table.Add(std::make_shared<Flagged>(gone));
  EXPECT_NE(table.Find(handle), nullptr);
  EXPECT_TRUE(table.Close(handle));
  EXPECT_TRUE(gone);
  EXPECT_EQ(table.Find(handle), nullptr);
  EXPECT_FALSE(table.Close(handle));
}

TEST(HandleTable, KeepsAnObjectForACallUnderWay) {
  HandleTable table;
  bool gone = false;
  const HANDLE handle = table.Add(std::make_shared<Flagged>(gone));
  auto held = table.Find(handle);
  EXPECT_TRUE(table.Close(handle));
  EXPECT_FALSE(gone);
  held.reset();
  EXPECT_TRUE(gone);
}

TEST(HandleTable, NeverGivesAValueTwice) {
  HandleTable table;
  std::set<HANDLE> values;
  for (int i = 0; i < 10000; ++i) {
    const HANDLE handle = table.Add(std::make_shared<HandleObject>());
    EXPECT_TRUE(values.insert(handle).second);
    EXPECT_TRUE(table.Close(handle));
  }
  EXPECT_FALSE(values.contains(0));
  EXPECT_FALSE(values.contains(ce::INVALID_HANDLE_VALUE));
}

TEST(HandleTable, IsSharedByThreads) {
  HandleTable table;
  std::vector<std::thread> threads;
  for (int i = 0; i < 4; ++i) {
    threads.emplace_back([&table] {
      for (int n = 0; n < 1000; ++n) {
        const HANDLE handle = table.Add(std::make_shared<HandleObject>());
        EXPECT_NE(table.Find(handle), nullptr);
        EXPECT_TRUE(table.Close(handle));
      }
    });
  }
  for (std::thread& thread : threads) thread.join();
}

TEST(FindHandle, FindsOnlyObjectsOfTheKind) {
  struct Other : HandleObject {};
  bool gone = false;
  const HANDLE handle = ce::host::AddHandle(std::make_shared<Flagged>(gone));
  EXPECT_NE(ce::host::FindHandle<Flagged>(handle), nullptr);
  EXPECT_EQ(ce::host::FindHandle<Other>(handle), nullptr);
  EXPECT_TRUE(ce::host::ObjectHandles().Close(handle));
}

}  // namespace
}  // namespace corvane
