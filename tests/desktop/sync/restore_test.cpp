#include "desktop/sync/restore.h"

#include <gtest/gtest.h>

#include <chrono>
#include <memory>
#include <set>

#include "desktop/wire/error.h"
#include "tests/desktop/sync/sync_fixture.h"

namespace desktop::testing {
namespace {

class RestoreTest : public ::testing::Test {
 protected:
  RestoreResults Restore(const std::string& time = "latest") {
    FakeAgent agent(std::vector<FakeAgent::Script>(40, world_->store_.Serve(answers_)));
    RestoreOptions options;
    options.folder = world_->options_.folder;
    options.time = time;
    options.quiet = {};
    options.hook = hook_;
    return desktop::Restore(agent.options(), options);
  }
  // The values, since what is brought back to the handheld may have another OID.
  struct Both {
    std::vector<std::vector<TestItem>> desk, handheld;
    friend bool operator==(const Both&, const Both&) = default;
    friend void PrintTo(const Both& both, std::ostream* stream) {
      *stream << ::testing::PrintToString(both.desk) << " | "
              << ::testing::PrintToString(both.handheld);
    }
  };
  Both Now() const {
    Both both;
    for (const ItemKind kind : kItemKinds) {
      both.desk.push_back(world_->Desk(kind));
      both.handheld.push_back(world_->Handheld(kind));
    }
    return both;
  }
  // Something of everything: added, changed, deleted and in conflict, on either side.
  void EditEverything() {
    for (const ItemKind kind : kItemKinds) {
      world_->ChangeOnDesk(kind, {"Ada", "0", {}}, {"Ada", "D", {}});
      world_->ChangeOnHandheld(kind, {"Ben", "0", {}}, {"Ben", "H", {}});
      world_->ChangeOnDesk(kind, {"Cleo", "0", {}}, {"Cleo", "D", {}});
      world_->ChangeOnHandheld(kind, {"Cleo", "0", {}}, {"Cleo", "H", {}});
      world_->RemoveFromDesk(kind, {"Dora", "0", {}});
      world_->RemoveFromHandheld(kind, {"Emil", "0", {}});
      world_->AddOnDesk(kind, {"Finn", "D", {}});
      world_->AddOnHandheld(kind, {"Gina", "H", {}});
    }
  }
  void Begin() {
    for (const ItemKind kind : kItemKinds) {
      for (const char* const name : {"Ada", "Ben", "Cleo", "Dora", "Emil"}) {
        world_->AddOnDesk(kind, {name, "0", {}});
      }
    }
    ASSERT_EQ(world_->Sync().problem, "");
  }

  std::unique_ptr<SyncWorld> world_ = std::make_unique<SyncWorld>();
  StepHook hook_;
  std::size_t answers_ = SIZE_MAX;
};

TEST_F(RestoreTest, BringsBothSidesBackToWhatTheyHadBeforeTheLastRun) {
  Begin();
  EditEverything();
  const Both before = Now();
  ASSERT_EQ(world_->Sync().problem, "");
  ASSERT_NE(Now(), before);
  EXPECT_TRUE(Restore().problems.empty());
  EXPECT_EQ(Now(), before);
}

TEST_F(RestoreTest, CanBeUndoneItself) {
  Begin();
  EditEverything();
  ASSERT_EQ(world_->Sync().problem, "");
  const Both after = Now();
  Restore();
  ASSERT_NE(Now(), after);
  Restore();
  EXPECT_EQ(Now(), after);
  const SyncSeen sync = world_->Sync();
  EXPECT_EQ(sync.problem, "");
  EXPECT_EQ(sync.results.counts.desk + sync.results.counts.handheld, 0u);
}

TEST_F(RestoreTest, LetsTheNextRunDoTheSameAgain) {
  Begin();
  EditEverything();
  ASSERT_EQ(world_->Sync().problem, "");
  const Both after = Now();
  Restore();
  ASSERT_EQ(world_->Sync().problem, "");
  EXPECT_EQ(Now(), after);
}

TEST_F(RestoreTest, GoesBackOverSeveralRuns) {
  Begin();
  world_->AddOnHandheld(ItemKind::kTask, {"Hugo", "H", {}});
  const Both before = Now();
  ASSERT_EQ(world_->Sync().problem, "");
  EditEverything();
  ASSERT_EQ(world_->Sync().problem, "");
  const auto runs = RestorableRuns(world_->options_.folder);
  ASSERT_EQ(runs.size(), 3u);
  Restore(runs[1].time);
  EXPECT_EQ(Now().handheld, before.handheld);
  for (const TestItem& item : world_->Desk(ItemKind::kTask)) {
    EXPECT_NE(item.name, "Hugo") << "a run had put it there";
    EXPECT_NE(item.first, "H") << "so had one this";
  }
}

TEST_F(RestoreTest, KeepsAnEditOfTheDeskThatNoRunHasTouched) {
  Begin();
  world_->ChangeOnHandheld(ItemKind::kContact, {"Ben", "0", {}}, {"Ben", "H", {}});
  ASSERT_EQ(world_->Sync().problem, "");
  world_->ChangeOnDesk(ItemKind::kContact, {"Ada", "0", {}}, {"Ada", "later", {}});
  Restore();
  EXPECT_EQ(world_->Desk(ItemKind::kContact)[0], (TestItem{"Ada", "later", {}}));
  EXPECT_EQ(world_->Desk(ItemKind::kContact)[1], (TestItem{"Ben", "0", {}}));
}

TEST_F(RestoreTest, IsFinishedByTheSameOnceMoreWhereverItWasCutOff) {
  for (int cut = 0;; ++cut) {
    SCOPED_TRACE(cut);
    world_ = std::make_unique<SyncWorld>();
    Begin();
    EditEverything();
    const Both before = Now();
    ASSERT_EQ(world_->Sync().problem, "");
    const std::string time = RestorableRuns(world_->options_.folder).back().time;
    int left = cut;
    hook_ = [&](std::string_view) {
      if (left-- == 0) throw Error("cut off");
    };
    bool whole = true;
    try {
      Restore(time);
    } catch (const Error&) {
      whole = false;
    }
    hook_ = {};
    if (whole) break;
    Restore(time);
    EXPECT_EQ(Now(), before);
  }
}

TEST_F(RestoreTest, RefusesATimeThatIsNotThere) {
  Begin();
  EXPECT_THROW(Restore("2001-01-01T00-00-00Z"), Error);
}

TEST(History, KeepsTheLastTenAndOneAMonthForAYear) {
  const TemporaryDirectory directory;
  const History history(directory / "history");
  const auto first = std::chrono::sys_days{std::chrono::year{2025} / 6 / 1};
  directory.Write(directory / "memory.db", "m");
  const auto runs = [&] {
    std::vector<std::string> times;
    for (const SavedRun& run : history.Runs()) times.push_back(run.time.substr(0, 10));
    return times;
  };
  History::Time now = first;
  for (int day = 0; day < 600; day += 10) {
    now = first + std::chrono::days{day};
    const std::string name = std::to_string(day) + ".vcf";
    directory.Write(directory / name, name);
    history.Save({history.NewTime(now), {}, {}, {}}, directory.path(), {name}, {},
                 directory / "memory.db");
    history.Prune(now);
  }
  const std::vector<std::string> kept = runs();
  EXPECT_EQ(kept.size(), 10u + 9u) << "the last hundred days, and the nine months before";
  EXPECT_EQ(kept.back(), "2027-01-12");
  // What went has been taken over by those that stay.
  std::set<std::string> files;
  for (const SavedRun& run : history.Runs()) {
    for (const auto& entry : std::filesystem::directory_iterator(history.DeskOf(run.time))) {
      files.insert(entry.path().filename().string());
    }
  }
  for (int day = 260; day < 600; day += 10) {
    EXPECT_TRUE(files.contains(std::to_string(day) + ".vcf")) << day;
  }
}

}  // namespace
}  // namespace desktop::testing
