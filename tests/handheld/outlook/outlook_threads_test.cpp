#include <atomic>
#include <thread>

#include "handheld/store/store_check.h"
#include "handheld/store/write_turn.h"
#include "tests/handheld/outlook/outlook_support.h"

namespace ce::host::testing {
namespace {

class OutlookThreads : public HandheldTest {
 protected:
  template <typename Work>
  static void Run(int threads, Work work) {
    std::vector<std::jthread> running;
    for (int i = 0; i < threads; ++i) running.emplace_back([work, i] { work(i); });
  }
};

TEST_F(OutlookThreads, LogOnToANewStoreTogether) {
  std::atomic<int> failures = 0;
  Run(8, [&failures](int) {
    if (NewApp()->Logon(0) != S_OK) ++failures;
  });
  EXPECT_EQ(failures, 0);
}

TEST_F(OutlookThreads, WritersLoseNothingAndShareNoOid) {
  constexpr int kWriters = 4;
  constexpr int kEach = 50;
  std::vector<std::vector<LONG>> oids(kWriters);
  Run(kWriters, [&oids](int writer) { oids[writer] = AddContacts(LoggedOn(), kEach); });
  std::vector<LONG> all;
  for (const auto& some : oids) all.insert(all.end(), some.begin(), some.end());
  std::sort(all.begin(), all.end());
  EXPECT_EQ(std::adjacent_find(all.begin(), all.end()), all.end());
  EXPECT_EQ(StoredCount(), kWriters * kEach);
  EXPECT_EQ(CheckStore(*handheld_), std::vector<std::string>{});
}

TEST_F(OutlookThreads, WriteInTheOrderInWhichTheyCame) {
  constexpr int kWaiting = 4;
  LoggedOn();
  WriteTurn first;
  ASSERT_TRUE(first.Await());
  std::vector<int> order;
  std::vector<std::jthread> waiting;
  for (int i = 0; i < kWaiting; ++i) {
    waiting.emplace_back([&order, i] {
      WriteTurn turn;
      EXPECT_TRUE(turn.Await());
      order.push_back(i);
      turn.End();
    });
    while (WaitingWriters() != static_cast<std::size_t>(i) + 1) std::this_thread::yield();
  }
  EXPECT_TRUE(order.empty());
  first.End();
  waiting.clear();
  EXPECT_THAT(order, ::testing::ElementsAre(0, 1, 2, 3));
}

TEST_F(OutlookThreads, AWriteThatWaitedInVainLetsTheNextOnePass) {
  WriteTurn first;
  ASSERT_TRUE(first.Await());
  {
    WriteTurn second;
    EXPECT_FALSE(second.Await(std::chrono::milliseconds{1}));
  }
  EXPECT_EQ(WaitingWriters(), 0u);
  first.End();
  WriteTurn third;
  EXPECT_TRUE(third.Await());
}

TEST_F(OutlookThreads, ReadersSeeOneSnapshotWhileOthersWrite) {
  AddContacts(LoggedOn(), 50);
  std::atomic<bool> done = false;
  std::jthread writer([&done] {
    const ComPtr<IPOutlookApp> app = LoggedOn();
    for (int i = 0; i < 50; ++i) {
      const LONG oid = AddContact(app, u"new");
      EXPECT_EQ(ContactByOid(app, oid)->Delete(), S_OK);
    }
    done = true;
  });
  Run(2, [&done](int) {
    do {
      const ComPtr<IPOutlookApp> app = LoggedOn();
      const ComPtr<IPOutlookItemCollection> items = Items(app);
      const INT count = CountOf(items);
      EXPECT_GE(count, 50);
      EXPECT_LE(count, 51);
      for (INT i = 1; i <= count; ++i) EXPECT_TRUE(ContactAt(items, i));
    } while (!done);
  });
}

TEST_F(OutlookThreads, TwoDeletionsOfTheWholeFolderBothSucceed) {
  AddContacts(LoggedOn(), 600);
  std::atomic<int> failures = 0;
  Run(2, [&failures](int) {
    const ComPtr<IPOutlookApp> app = LoggedOn();
    const ComPtr<IPOutlookItemCollection> items = Items(app);
    for (INT i = CountOf(items); i >= 1; --i) {
      const ComPtr<IContact> contact = ContactAt(items, i);
      if (!contact || contact->Delete() != S_OK) ++failures;
    }
  });
  EXPECT_EQ(failures, 0);
  EXPECT_EQ(StoredCount(), 0);
}

}  // namespace
}  // namespace ce::host::testing
