#include "desktop/sync/restore.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <chrono>
#include <cstdint>
#include <filesystem>
#include <map>
#include <memory>
#include <set>

#include "desktop/wire/error.h"
#include "tests/desktop/sync/sync_fixture.h"

namespace desktop::testing {
namespace {

namespace fs = std::filesystem;

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
  EXPECT_EQ(Now(), before);
}

TEST_F(RestoreTest, BringsBackWhatPeopleHaveEditedAndRemovedSince) {
  Begin();
  world_->AddOnHandheld(ItemKind::kContact, {"Hugo", "H", {}});
  const std::map<std::string, std::string> before = world_->Bytes();
  ASSERT_EQ(world_->Sync().problem, "");
  world_->ChangeOnDesk(ItemKind::kContact, {"Ada", "0", {}}, {"Ada", "spoilt", {}});
  world_->RemoveFromDesk(ItemKind::kContact, {"Ben", "0", {}});
  world_->RenameFileOnDesk(ItemKind::kTask, {"Cleo", "0", {}});
  world_->AddOnDesk(ItemKind::kTask, {"Finn", "D", {}});
  const auto spoilt = world_->Bytes();
  EXPECT_TRUE(Restore().problems.empty()) << "no run has seen any of it";
  EXPECT_EQ(world_->Bytes(), before);
  Restore();
  EXPECT_EQ(world_->Bytes(), spoilt) << "that can be undone as well";
}

TEST_F(RestoreTest, BringsBackFilesThatNoSynchronisationUnderstands) {
  Begin();
  const auto file = world_->options_.folder / "contacts/half.vcf";
  world_->directory_.Write(file, "BEGIN:VCARD\r\nVERSION:3.0\r\nFN:Ha");
  world_->AddOnHandheld(ItemKind::kTask, {"Hugo", "H", {}});
  ASSERT_EQ(world_->Sync().problem, "");
  world_->directory_.Write(file, "");
  Restore();
  EXPECT_EQ(world_->directory_.Read(file), "BEGIN:VCARD\r\nVERSION:3.0\r\nFN:Ha");
}

TEST_F(RestoreTest, LeavesAloneWhatIsChangedMeanwhile) {
  Begin();
  EditEverything();
  ASSERT_EQ(world_->Sync().problem, "");
  const auto files = world_->FolderBytes();
  const auto gina = std::ranges::find_if(files, [](const auto& file) {
    return file.first.starts_with("contacts/") && file.second.find("Gina") != std::string::npos;
  });
  ASSERT_NE(gina, files.end());
  const auto path = world_->options_.folder / gina->first;
  hook_ = [&](std::string_view step) {
    if (step == "bring back a file") world_->directory_.Write(path, "meanwhile");
  };
  EXPECT_EQ(Restore().problems, std::vector{gina->first + ": it has been changed meanwhile"});
  EXPECT_EQ(world_->directory_.Read(path), "meanwhile");
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
  const DeskFolder folder(directory / "desk", ZoneNamed("UTC"));
  folder.Make();
  const auto first = std::chrono::sys_days{std::chrono::year{2025} / 6 / 1};
  directory.Write(directory / "memory.db", "m");
  std::map<std::string, std::string> desks;  // what the folder's one file held, by runs
  History::Time now = first;
  for (int day = 0; day < 600; day += 10) {
    now = first + std::chrono::days{day};
    // Every other run finds the file as it was.
    const std::string bytes = std::to_string(day / 20);
    directory.Write(directory / "desk/contacts/a.vcf", bytes);
    const std::string time = history.NewTime(now);
    desks[time] = bytes;
    history.Save({time, {}, {}}, folder, {}, directory / "memory.db");
    history.Prune(now);
  }
  const std::vector<SavedRun> kept = history.Runs();
  EXPECT_EQ(kept.size(), 10u + 9u) << "the last hundred days, and the nine months before";
  EXPECT_EQ(kept.back().time.substr(0, 10), "2027-01-12");
  const DeskHistory desk = history.Desk();
  std::set<std::int64_t> contents;
  for (const SavedRun& run : kept) {
    const auto files = desk.Before(run.time);
    ASSERT_EQ(files.size(), 1u);
    EXPECT_EQ(desk.BytesOf(files.at("contacts/a.vcf")), desks[run.time]) << run.time;
    contents.insert(files.at("contacts/a.vcf"));
  }
  EXPECT_EQ(contents.size(), 5u + 9u) << "each content once";
  EXPECT_THROW(static_cast<void>(desk.Before(desks.begin()->first)), Error)
      << "it has been forgotten";
  EXPECT_EQ(desk.BytesOf(1), "") << "with what the folder held then";
}

TEST(History, KeepsNothingHalf) {
  const TemporaryDirectory directory;
  const History history(directory / "history");
  const DeskFolder folder(directory / "desk", ZoneNamed("UTC"));
  folder.Make();
  directory.Write(directory / "memory.db", "m");
  const auto entries = [&] {
    std::set<std::string> names;
    for (const auto& entry : fs::directory_iterator(directory / "history")) {
      names.insert(entry.path().filename().string());
    }
    return names;
  };
  EXPECT_ANY_THROW(history.Save({"2026-01-01T00-00-00Z", {}, {}}, folder, {}, directory / "none"));
  EXPECT_EQ(entries(), std::set<std::string>{"desk.db"}) << "memory could not be read";
  // As a run that was killed leaves it.
  fs::create_directory(directory / "history/.2025-12-01T00-00-00Z");
  directory.Write(directory / "history/.2025-12-01T00-00-00Z/handheld.xml", "<root>");
  history.Save({"2026-01-02T00-00-00Z", {}, {}}, folder, {}, directory / "memory.db");
  EXPECT_EQ(entries(), (std::set<std::string>{"2026-01-02T00-00-00Z", "desk.db"}));
  EXPECT_EQ(fs::status(directory / "history/desk.db").permissions(),
            fs::perms::owner_read | fs::perms::owner_write);
}

TEST_F(RestoreTest, KnowsNoMoreRunsWhenMostWereCutOff) {
  Begin();
  for (int run = 0; run < 12; ++run) {
    world_->AddOnDesk(ItemKind::kContact, {"Gina" + std::to_string(run), "D", {}});
    world_->options_.hook = [&](std::string_view step) {
      if (step == "read back") throw Error("the disk is full");
    };
    EXPECT_EQ(world_->Sync().results.problem, "the disk is full");
  }
  EXPECT_EQ(RestorableRuns(world_->options_.folder).size(), 10u + 1u) << "and one of the month";
}

TEST_F(RestoreTest, KnowsNothingOfARunThatChangedNothing) {
  Begin();
  const auto runs = [&] { return RestorableRuns(world_->options_.folder).size(); };
  const std::size_t before = runs();
  world_->AddOnHandheld(ItemKind::kContact, {"Gina", "H", {}});
  std::size_t saved = 0;
  world_->options_.hook = [&](std::string_view step) {
    if (step != "note what becomes a file") return;
    saved = runs();
    throw Error("the disk is full");
  };
  EXPECT_EQ(world_->Sync().results.problem, "the disk is full");
  EXPECT_EQ(saved, before + 1);
  EXPECT_EQ(runs(), before);
}

TEST(History, RefusesARunOfAKindThatThereIsNot) {
  const TemporaryDirectory directory;
  const std::string about = "2026-11-22T09-46-50Z/about.json";
  std::filesystem::create_directories((directory / about).parent_path());
  const History history(directory.path());
  directory.Write(about, R"({"what":"2 added","kinds":[0,2]})");
  EXPECT_EQ(history.Runs().at(0).kinds,
            (std::vector<ItemKind>{ItemKind::kContact, ItemKind::kTask}));
  for (const char* kinds : {"[3]", "[-1]", "[4294967296]", "[0.5]", "[\"a\"]", "7"}) {
    directory.Write(about, std::string(R"({"what":"2 added","kinds":)") + kinds + "}");
    EXPECT_THROW(static_cast<void>(history.Runs()), Error) << kinds;
  }
}

}  // namespace
}  // namespace desktop::testing
