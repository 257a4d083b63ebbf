#include "desktop/sync/archive.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <cstddef>

#include "tests/desktop/sync/sync_fixture.h"

namespace desktop::testing {
namespace {

using ::testing::HasSubstr;
using ::testing::IsEmpty;

std::string Message(const std::string& time, const std::string& text) {
  return "<SMS><Folder>/Inbox</Folder><Time>" + time +
         "</Time><Flags>1</Flags><Sender>+49301</Sender><NOTES>" + text + "</NOTES></SMS>";
}

class ArchiveTest : public ::testing::Test {
 protected:
  std::size_t Sync() {
    const SyncSeen seen = world_.Sync();
    EXPECT_EQ(seen.problem, "");
    return seen.results.items.size();
  }
  std::string Archive(const std::string& name) const {
    return world_.directory_.Read(world_.options_.folder / name);
  }
  void Has(Oid oid, const std::string& time, const std::string& text) {
    world_.store_.items[oid] = Message(time, text);
  }
  static std::ptrdiff_t Lines(const std::string& text) {
    return std::count(text.begin(), text.end(), '\n');
  }

  SyncWorld world_;
};

TEST_F(ArchiveTest, HasAFileAMonthAndEachEntryOnce) {
  Has(1, "20080215T134501", "one");
  Has(2, "20080229T235959", "two");
  Has(3, "20080301T000000", "three");
  Sync();
  const std::string february = Archive("messages/2008-02.jsonl");
  EXPECT_EQ(Lines(february), 2);
  EXPECT_THAT(february, HasSubstr("\"text\":\"one\""));
  EXPECT_EQ(Lines(Archive("messages/2008-03.jsonl")), 1);
  Sync();
  EXPECT_EQ(Archive("messages/2008-02.jsonl"), february);
}

TEST_F(ArchiveTest, OnlyGrowsWhateverIsDeletedOnTheHandheld) {
  Has(1, "20080215T134501", "one");
  Sync();
  world_.store_.items.clear();
  Has(7, "20080216T134501", "two");
  Sync();
  const std::string both = Archive("messages/2008-02.jsonl");
  EXPECT_THAT(both, HasSubstr("\"text\":\"one\""));
  EXPECT_THAT(both, HasSubstr("\"text\":\"two\""));
}

TEST_F(ArchiveTest, HasAsManyOfTwinsAsTheHandheldHadAtOnce) {
  Has(1, "20080215T134501", "same");
  Has(2, "20080215T134501", "same");
  Sync();
  EXPECT_EQ(Lines(Archive("messages/2008-02.jsonl")), 2);
  Has(3, "20080215T134501", "same");
  Sync();
  EXPECT_EQ(Lines(Archive("messages/2008-02.jsonl")), 3);
}

TEST_F(ArchiveTest, LeavesWhatElseStandsInAFileAsItIs) {
  std::filesystem::create_directories(world_.options_.folder / "messages");
  world_.directory_.Write(world_.options_.folder / "messages/2008-02.jsonl", "a note of mine");
  Has(1, "20080215T134501", "one");
  Sync();
  EXPECT_THAT(Archive("messages/2008-02.jsonl"), ::testing::StartsWith("a note of mine\n{"));
}

TEST_F(ArchiveTest, KeepsCallsAndWhatHasNoTime) {
  world_.store_.items[1] = "<Call><Number>+49301</Number><Outgoing>TRUE</Outgoing></Call>";
  Sync();
  EXPECT_EQ(Lines(Archive("calls/undated.jsonl")), 1);
  EXPECT_THAT(Archive("messages/2008-02.jsonl"), IsEmpty());
}

}  // namespace
}  // namespace desktop::testing
