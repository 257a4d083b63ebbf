// A push after one that was broken off while the handheld goes on with what it has.
#include "desktop/transfer/push_recovery.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <set>

#include "tests/desktop/push_fixture.h"

namespace desktop::testing {
namespace {

using ::testing::HasSubstr;

constexpr int kRecords = 4;

class PushRecoveryTest : public PushTest {
 protected:
  // Takes a chunk, which is only stored by a later call of Work, and goes away.
  FakeAgent::Script TakeAndGo() {
    return [this](Peer& peer) {
      peer.ReceiveCounted();
      peer.Send(Word(0));
      for (const Record& record : ParseRecords(peer.ReceiveCounted())) {
        left_.push_back(record.bytes);
      }
    };
  }
  // Stores some of what has been taken, as the one that took it does at its own pace.
  void Work(std::size_t count) {
    for (; count > 0 && !left_.empty(); --count) {
      store_.items[next_++] = left_.front();
      left_.pop_front();
    }
  }
  // A push whose n-th connection is served when so many more records have been stored.
  int PushWhileAtWork(const std::vector<std::size_t>& workBefore) {
    std::vector<FakeAgent::Script> scripts;
    for (std::size_t i = 0; i < 12; ++i) {
      const std::size_t work = i < workBefore.size() ? workBefore[i] : 0;
      scripts.push_back([this, work, serve = store_.Serve()](Peer& peer) {
        Work(work);
        serve(peer);
      });
    }
    FakeAgent agent(std::move(scripts));
    return Run(agent.options());
  }
  std::set<std::string> NamesThere() const {
    std::set<std::string> names;
    for (const auto& [oid, bytes] : store_.items) {
      names.insert(std::string(ElementOf(bytes).ChildText("LAST_NAME")));
    }
    return names;
  }
  void InputRecords() {
    std::string cards;
    for (int i = 0; i < kRecords; ++i) {
      cards += Card("u" + std::to_string(i), "N" + std::to_string(i));
    }
    Input(cards);
  }
  void BreakOff() {
    ASSERT_EQ(RunAgainst(TakeAndGo()), kFailed);
    ASSERT_EQ(left_.size(), static_cast<std::size_t>(kRecords));
  }
  // Every item once, and the next push has nothing to do.
  void ExpectEachOnce() {
    EXPECT_EQ(store_.items.size(), static_cast<std::size_t>(kRecords)) << out() << err();
    EXPECT_EQ(NamesThere().size(), static_cast<std::size_t>(kRecords));
    EXPECT_EQ(PushWhileAtWork({}), kDone);
    EXPECT_EQ(err(), "4 unchanged\n");
  }

  std::deque<std::string> left_;
  Oid next_ = 1001;
};

TEST_F(PushRecoveryTest, AwaitsWhatIsStillComing) {
  InputRecords();
  BreakOff();
  EXPECT_EQ(PushWhileAtWork({0, 1, 1, 1, 1}), kDone);
  EXPECT_EQ(err(), "4 unchanged\n");
  ExpectEachOnce();
}

// Before the first look, the second, the upload, the look behind it, and further ones.
TEST_F(PushRecoveryTest, LeavesEachThereOnceWheneverItCameBeforeTheEnd) {
  int cases = 0;
  for (std::size_t first = 0; first < 5; ++first) {
    for (std::size_t second = first; second < 5; ++second) {
      SCOPED_TRACE(std::to_string(first) + " and " + std::to_string(second));
      store_.items.clear();
      left_.clear();
      std::filesystem::remove(directory_ / "map.json");
      InputRecords();
      BreakOff();
      std::vector<std::size_t> work(5);
      work[first] += 2;
      work[second] += 2;
      EXPECT_EQ(PushWhileAtWork(work), kDone);
      if (!left_.empty()) continue;  // it came after the end
      ++cases;
      ExpectEachOnce();
    }
  }
  EXPECT_GE(cases, 10);
}

TEST_F(PushRecoveryTest, DeletesWhatCameAfterItWasAddedAnew) {
  InputRecords();
  BreakOff();
  EXPECT_EQ(PushWhileAtWork({0, 0, 3}), kDone);
  EXPECT_EQ(err(),
            "3 more of an earlier push came late, were there twice and have been deleted\n"
            "4 added\n");
  left_.clear();
  ExpectEachOnce();
}

TEST_F(PushRecoveryTest, TakesInWhatCameLateAndWasNotAddedAnew) {
  InputRecords();
  BreakOff();
  const std::string cards = directory_.Read("in.vcf");
  Input(Card("other", "Other"));
  EXPECT_EQ(PushWhileAtWork({0, 0, 4}), kDone);
  EXPECT_EQ(err(), "1 added\n");
  Input(cards);
  EXPECT_EQ(PushWhileAtWork({}), kDone);
  EXPECT_EQ(err(), "4 unchanged\n");
  EXPECT_EQ(store_.items.size(), 5U);
}

TEST_F(PushRecoveryTest, FindsTheSurplusOfTwoThatWereBrokenOff) {
  InputRecords();
  BreakOff();
  {
    // The second one stores its own records and goes away without an answer.
    const FakeAgent::Script look = store_.Serve();
    FakeAgent agent({look, look, [this](Peer& peer) {
                       peer.ReceiveCounted();
                       peer.Send(Word(0));
                       for (const Record& record : ParseRecords(peer.ReceiveCounted())) {
                         store_.items[next_++] = record.bytes;
                       }
                     }});
    ASSERT_EQ(Run(agent.options()), kFailed);
  }
  Work(kRecords);
  ASSERT_EQ(store_.items.size(), 2U * kRecords);
  EXPECT_EQ(PushWhileAtWork({}), kDone);
  EXPECT_THAT(err(), HasSubstr("4 more of an earlier push came late"));
  ExpectEachOnce();
}

TEST_F(PushRecoveryTest, LeavesTwinsOfOthersAlone) {
  InputRecords();
  store_.items[7] = "<CONTACT><LAST_NAME>N0</LAST_NAME><FileAs>N0</FileAs></CONTACT>";
  store_.items[8] = store_.items[7];
  BreakOff();
  Work(kRecords);
  EXPECT_EQ(PushWhileAtWork({}), kDone);
  EXPECT_EQ(store_.items.size(), 2U + kRecords);
}

}  // namespace
}  // namespace desktop::testing
