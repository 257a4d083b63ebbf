#include "desktop/transfer/journal.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/resource.h>

#include <csignal>

#include "desktop/wire/error.h"
#include "tests/desktop/fixtures.h"

namespace desktop::testing {
namespace {

using ::testing::ElementsAre;

// No file of this process may grow beyond that, as on a disk that is full.
class FileSizeLimit {
 public:
  explicit FileSizeLimit(rlim_t bytes) : signal_(std::signal(SIGXFSZ, SIG_IGN)) {
    getrlimit(RLIMIT_FSIZE, &before_);
    const rlimit limit{bytes, before_.rlim_max};
    setrlimit(RLIMIT_FSIZE, &limit);
  }
  ~FileSizeLimit() {
    setrlimit(RLIMIT_FSIZE, &before_);
    std::signal(SIGXFSZ, signal_);
  }
  FileSizeLimit(const FileSizeLimit&) = delete;
  FileSizeLimit& operator=(const FileSizeLimit&) = delete;

 private:
  rlimit before_{};
  void (*signal_)(int);
};

class JournalTest : public ::testing::Test {
 protected:
  TemporaryDirectory directory_;
  Journal journal_{directory_ / "journal"};
};

TEST_F(JournalTest, MakesItsFileWithTheFirstLines) {
  EXPECT_FALSE(journal_.exists());
  EXPECT_TRUE(journal_.empty());
  journal_.Append("a\n");
  journal_.Append("b\nc\n");
  EXPECT_TRUE(journal_.exists());
  EXPECT_FALSE(journal_.empty());
  EXPECT_THAT(journal_.Lines(), ElementsAre("a", "b", "c"));
}

TEST_F(JournalTest, LeavesOutWhatHasNoEnd) {
  directory_.Write(journal_.path(), "a\nb");
  EXPECT_THAT(journal_.Lines(), ElementsAre("a"));
}

TEST_F(JournalTest, BeginsAnewOnceDiscarded) {
  journal_.Discard();
  journal_.Append("a\n");
  journal_.Discard();
  EXPECT_FALSE(journal_.exists());
  EXPECT_TRUE(journal_.empty());
  journal_.Append("b\n");
  EXPECT_THAT(journal_.Lines(), ElementsAre("b"));
}

TEST_F(JournalTest, AddsNothingToAFileFromBefore) {
  directory_.Write(journal_.path(), "a\n");
  EXPECT_THROW(journal_.Append("b\n"), Error);
  EXPECT_EQ(directory_.Read(journal_.path()), "a\n");
}

TEST_F(JournalTest, TakesBackTheLinesThatOnlyFitInPart) {
  journal_.Append("first\n");
  {
    const FileSizeLimit limit(10);
    EXPECT_THROW(journal_.Append("second\n"), Error);
  }
  EXPECT_EQ(directory_.Read(journal_.path()), "first\n");
  journal_.Append("third\n");
  EXPECT_THAT(journal_.Lines(), ElementsAre("first", "third"));
}

}  // namespace
}  // namespace desktop::testing
