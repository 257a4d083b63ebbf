#include "desktop/commands/sync_watch.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <unistd.h>

#include <chrono>
#include <filesystem>
#include <functional>
#include <string>
#include <utility>
#include <vector>

#include "desktop/commands/console.h"
#include "desktop/wire/error.h"
#include "tests/support/temporary_directory.h"

namespace desktop::testing {
namespace {

namespace fs = std::filesystem;
using ::testing::ElementsAre;

// What runs do is said by the tests; time passes nowhere, since no place is ever due by it.
class SyncWatchTest : public ::testing::Test {
 protected:
  SyncWatchTest() {
    if (pipe(pipe_) != 0) throw Error("no pipe");
    options_.every = std::chrono::hours(24);
    options_.interruptFd = pipe_[0];
    options_.onWait = [this] { Interrupt(); };
  }
  ~SyncWatchTest() override {
    for (const int end : pipe_) close(end);
  }
  void Interrupt() const { ASSERT_EQ(write(pipe_[1], "", 1), 1); }
  // A place whose runs are counted; the run gets the number.
  void Add(const std::string& name, std::function<int(int)> run) {
    fs::create_directories(directory_ / name / "contacts");
    const std::size_t which = runs_.size();
    runs_.push_back(0);
    places_.push_back({directory_ / name,
                       {},
                       [this, which, run = std::move(run)] { return run(++runs_[which]); },
                       [](const std::string& line) { ADD_FAILURE() << line; }});
  }
  void Edit(const std::string& name) const {
    directory_.Write(directory_ / name / "contacts/ada.vcf", "x");
  }
  std::vector<int> Watch() { return WatchPlaces(places_, options_); }

  const corvane::testing::TemporaryDirectory directory_;
  int pipe_[2] = {-1, -1};
  WatchOptions options_;
  std::vector<WatchedPlace> places_;
  std::vector<int> runs_;
};

TEST_F(SyncWatchTest, RunsEachPlaceOnceAndWaits) {
  Add("a", [](int) { return kDone; });
  Add("b", [](int) { return kPartlyDone; });
  EXPECT_THAT(Watch(), ElementsAre(kDone, kPartlyDone));
  EXPECT_THAT(runs_, ElementsAre(1, 1));
}

TEST_F(SyncWatchTest, RunsAgainWhereAFileHasChanged) {
  Add("a", [](int) { return kDone; });
  Add("b", [](int) { return kDone; });
  int waits = 0;
  options_.onWait = [&] { ++waits == 1 ? Edit("b") : Interrupt(); };
  Watch();
  EXPECT_THAT(runs_, ElementsAre(1, 2));
}

TEST_F(SyncWatchTest, IsWokenOnceByWhatARunWrites) {
  Add("a", [this](int run) {
    if (run == 1) Edit("a");
    return kDone;
  });
  Watch();
  EXPECT_THAT(runs_, ElementsAre(2));
}

TEST_F(SyncWatchTest, DoesNotHurryAfterRunsThatWriteEachTime) {
  Add("a", [this](int) {
    Edit("a");
    return kPartlyDone;
  });
  Watch();
  EXPECT_THAT(runs_, ElementsAre(2));
}

TEST_F(SyncWatchTest, DoesNotRepeatAFailureBeforeSomethingChanges) {
  Add("a", [this](int run) {
    Edit("a");
    return run == 1 ? kFailed : kDone;
  });
  int waits = 0;
  options_.onWait = [&] {
    EXPECT_EQ(runs_[0], ++waits == 1 ? 1 : 3);
    waits == 1 ? Edit("a") : Interrupt();
  };
  Watch();
}

TEST_F(SyncWatchTest, EndsWithWhatWasDone) {
  Add("failed", [](int) { return kFailed; });
  Add("failed-later", [](int run) { return run == 1 ? kDone : kFailed; });
  Add("interrupted", [](int run) -> int {
    if (run == 1) return kDone;
    throw Interrupted();
  });
  int waits = 0;
  options_.onWait = [&] { Edit(++waits == 1 ? "failed-later" : "interrupted"); };
  EXPECT_THAT(Watch(), ElementsAre(kFailed, kPartlyDone, kDone));
}

TEST_F(SyncWatchTest, RunsNothingOnceItIsInterrupted) {
  Add("a", [](int) { return kDone; });
  Interrupt();
  EXPECT_THAT(Watch(), ElementsAre(kFailed));
  EXPECT_THAT(runs_, ElementsAre(0));
}

TEST_F(SyncWatchTest, RunsAgainAfterItsTime) {
  options_.every = std::chrono::seconds(0);
  options_.onWait = {};
  Add("a", [this](int run) {
    if (run == 5) Interrupt();
    return kDone;
  });
  Watch();
  EXPECT_THAT(runs_, ElementsAre(5));
}

}  // namespace
}  // namespace desktop::testing
