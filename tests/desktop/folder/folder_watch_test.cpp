#include "desktop/folder/folder_watch.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <string>

#include "tests/support/temporary_directory.h"

namespace desktop::testing {
namespace {

namespace fs = std::filesystem;

class FolderWatchTest : public ::testing::Test {
 protected:
  FolderWatchTest() {
    for (const char* const name : {"contacts", "calendar", "tasks", "messages", ".corvane"}) {
      fs::create_directories(Path(name));
    }
    watch_.Watch();
  }
  fs::path Path(const std::string& name) const { return directory_ / ("desk/" + name); }
  bool SeesWriting(const std::string& name) {
    directory_.Write(Path(name), "x");
    return watch_.TakeChanges();
  }

  const corvane::testing::TemporaryDirectory directory_;
  FolderWatch watch_{directory_ / "desk", {}};
};

TEST_F(FolderWatchTest, SeesFilesThatTheFolderReads) {
  EXPECT_FALSE(watch_.TakeChanges());
  EXPECT_TRUE(SeesWriting("contacts/ada.vcf"));
  EXPECT_FALSE(watch_.TakeChanges()) << "once";
  EXPECT_TRUE(SeesWriting("contacts/ADA.VCF"));
  EXPECT_TRUE(SeesWriting("calendar/choir.ics"));
  EXPECT_TRUE(SeesWriting("tasks/milk.ics"));
  fs::rename(Path("tasks/milk.ics"), Path("tasks/bread.ics"));
  EXPECT_TRUE(watch_.TakeChanges());
  fs::remove(Path("tasks/bread.ics"));
  EXPECT_TRUE(watch_.TakeChanges());
}

TEST_F(FolderWatchTest, SeesNothingElse) {
  for (const char* const name :
       {"contacts/.ada.vcf", "contacts/ada.vcf~", "contacts/ada.ics", "calendar/choir.vcf",
        "messages/2026-11.jsonl", ".corvane/memory.db", "notes.txt"}) {
    EXPECT_FALSE(SeesWriting(name)) << name;
  }
}

TEST_F(FolderWatchTest, LeavesOutPartsThatAreNotAskedFor) {
  FolderWatch contacts(directory_ / "desk", {true, false});
  contacts.Watch();
  EXPECT_TRUE(SeesWriting("calendar/choir.ics"));
  EXPECT_FALSE(contacts.TakeChanges());
  EXPECT_TRUE(SeesWriting("contacts/ada.vcf"));
  EXPECT_TRUE(contacts.TakeChanges());
}

TEST_F(FolderWatchTest, TellsOfAFolderThatCameSince) {
  EXPECT_FALSE(watch_.Watch()) << "all of it is watched";
  fs::remove_all(Path("contacts"));
  EXPECT_TRUE(watch_.TakeChanges());
  fs::create_directory(Path("contacts"));
  EXPECT_TRUE(watch_.TakeChanges());
  EXPECT_TRUE(watch_.Watch());
  EXPECT_TRUE(SeesWriting("contacts/ada.vcf"));
}

TEST_F(FolderWatchTest, WaitsForAFolderThatIsNotThereYet) {
  FolderWatch later(directory_ / "later", {});
  EXPECT_FALSE(later.Watch());
  fs::create_directories(directory_ / "later/contacts");
  EXPECT_TRUE(later.Watch());
}

}  // namespace
}  // namespace desktop::testing
