#include "handheld/base/upload_memory.h"

#include <gtest/gtest.h>

#include <atomic>
#include <chrono>
#include <future>
#include <optional>
#include <thread>
#include <utility>

namespace ce::host {
namespace {

using Use = UploadMemory::Use;
using Share = UploadMemory::Share;
using std::chrono::milliseconds;

constexpr Use kUses[] = {Use::kReceived, Use::kTree};

void AwaitWaiting(const UploadMemory& memory, std::size_t threads) {
  while (memory.waiting() != threads) std::this_thread::yield();
}

class UploadMemoryTest : public ::testing::Test {
 protected:
  UploadMemoryTest() { memory_.SetLimits(200, milliseconds(0)); }

  // Takes on a thread of its own; the share comes back.
  std::future<Share> TakeLater(Use use, std::size_t bytes) {
    return std::async(std::launch::async, [=, this] { return *memory_.Take(use, bytes); });
  }

  UploadMemory memory_;
};

TEST_F(UploadMemoryTest, IsTakenAndGivenBack) {
  for (const Use use : kUses) {
    std::optional<Share> share = memory_.Take(use, 60);
    ASSERT_TRUE(share);
    EXPECT_EQ(memory_.taken(), 60u);
    share->Keep(10);
    EXPECT_EQ(memory_.taken(), 10u);
    share->Keep(100);
    EXPECT_EQ(memory_.taken(), 10u) << "only less is kept";
    const Share moved = std::move(*share);
    share.reset();
    EXPECT_EQ(moved.bytes(), 10u);
    EXPECT_EQ(memory_.taken(), 10u);
  }
  EXPECT_EQ(memory_.taken(), 0u);
}

TEST_F(UploadMemoryTest, HasRoomForHalfOfItAtMost) {
  EXPECT_TRUE(memory_.Take(Use::kReceived, 100));
  EXPECT_FALSE(memory_.Take(Use::kReceived, 101));
  EXPECT_EQ(memory_.Take(Use::kTree, 1000)->bytes(), 100u);
}

TEST_F(UploadMemoryTest, IsWaitedFor) {
  for (const Use use : kUses) {
    std::optional<Share> first = memory_.Take(use, 60);
    std::future<Share> second = TakeLater(use, 50);
    AwaitWaiting(memory_, 1);
    EXPECT_EQ(memory_.taken(), 60u);
    first.reset();
    EXPECT_EQ(second.get().bytes(), 50u);
  }
}

TEST_F(UploadMemoryTest, OfOneUseDoesNotWaitForTheOther) {
  const std::optional<Share> received = memory_.Take(Use::kReceived, 100);
  const std::optional<Share> tree = memory_.Take(Use::kTree, 100);
  EXPECT_EQ(memory_.taken(), 200u);
}

TEST_F(UploadMemoryTest, GoesToThoseWhoWaitInTheirOrder) {
  std::optional<Share> first = memory_.Take(Use::kTree, 60);
  std::future<Share> large = TakeLater(Use::kTree, 100);
  AwaitWaiting(memory_, 1);
  // There is room for it, but it is not its turn.
  std::future<Share> small = TakeLater(Use::kTree, 10);
  AwaitWaiting(memory_, 2);
  first.reset();
  {
    const Share share = large.get();
    EXPECT_EQ(share.bytes(), 100u);
    AwaitWaiting(memory_, 1);
  }
  EXPECT_EQ(small.get().bytes(), 10u);
}

TEST_F(UploadMemoryTest, ALoweredLimitIsKeptByThoseWhoComeNext) {
  std::optional<Share> first = memory_.Take(Use::kTree, 100);
  memory_.SetLimits(50, milliseconds(0));
  std::future<Share> second = TakeLater(Use::kTree, 10);
  AwaitWaiting(memory_, 1);
  first.reset();
  EXPECT_EQ(second.get().bytes(), 10u);
}

TEST_F(UploadMemoryTest, WhoKeepsOthersWaitingForAPeerIsCutOff) {
  memory_.SetLimits(200, milliseconds(1));
  std::promise<void> cut;
  std::promise<void> holds;
  std::thread holder([&] {
    const std::optional<Share> share = memory_.Take(Use::kReceived, 100);
    holds.set_value();
    std::atomic<bool> done = false;
    struct Peer {
      std::promise<void>& cut;
      std::atomic<bool>& done;
    } peer{cut, done};
    const UploadMemory::PeerWait wait(
        memory_,
        [](void* context) {
          Peer& each = *static_cast<Peer*>(context);
          if (!each.done.exchange(true)) each.cut.set_value();
        },
        &peer);
    cut.get_future().wait();
  });
  holds.get_future().wait();
  // Waits until the other's thread ends.
  EXPECT_EQ(memory_.Take(Use::kReceived, 100)->bytes(), 100u);
  holder.join();
}

TEST_F(UploadMemoryTest, WhoHasNoneIsNotCutOff) {
  memory_.SetLimits(200, milliseconds(1));
  bool cut = false;
  const UploadMemory::PeerWait wait(
      memory_, [](void* context) { *static_cast<bool*>(context) = true; }, &cut);
  std::optional<Share> first = memory_.Take(Use::kTree, 100);
  std::future<Share> second = TakeLater(Use::kTree, 100);
  AwaitWaiting(memory_, 1);
  first.reset();
  EXPECT_EQ(second.get().bytes(), 100u);
  EXPECT_FALSE(cut);
}

}  // namespace
}  // namespace ce::host
