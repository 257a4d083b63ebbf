#include "common/calendar/tzif.h"

#include <gtest/gtest.h>

#include <string>

#include "common/calendar/zone_file.h"
#include "tests/support/zone_database.h"

namespace calendar {
namespace {

using corvane::testing::ZoneFile;
using corvane::testing::ZoneFileHeader;
using std::chrono::seconds;

// The second block's parts, in the order of a file with one change and one type.
struct Second {
  std::string header = ZoneFileHeader('2', 1);
  std::string time = std::string(8, '\0');
  std::string index = std::string(1, '\0');
  std::string type = std::string("\0\0\x0E\x10\0\0", 6);
  std::string names = std::string("CET\0", 4);
  std::string footer = "\nCET-1\n";

  std::string File() const {
    return ZoneFileHeader('2', 1) + std::string(5 + 6 + 4, '\0') + header + time + index + type +
           names + footer;
  }
};

TEST(HistoryOf, HasTheChangesOfTheSecondBlock) {
  const auto history = HistoryOf(Second{}.File());
  ASSERT_TRUE(history);
  EXPECT_EQ(history->firstOffset, seconds{3600});
  ASSERT_EQ(history->changes.size(), 1u);
  EXPECT_EQ(history->changes[0].at.time_since_epoch(), seconds{0});
  EXPECT_EQ(history->changes[0].offset, seconds{3600});
}

TEST(HistoryOf, ReadsEveryZoneOfTheSystem) {
  for (const std::string& name : ListZones()) {
    const auto file = ReadZoneFile(name);
    ASSERT_TRUE(file) << name;
    EXPECT_TRUE(HistoryOf(*file)) << name;
  }
}

TEST(HistoryOf, TakesAChangeBeforeAllYearsForTheBeginning) {
  Second second;
  second.time = "\x80" + std::string(7, '\0');
  const auto history = HistoryOf(second.File());
  ASSERT_TRUE(history);
  EXPECT_TRUE(history->changes.empty());
}

TEST(HistoryOf, RefusesATypeThatIsMissing) {
  Second second;
  second.index = "\x01";
  EXPECT_FALSE(HistoryOf(second.File()));
  EXPECT_TRUE(FooterOf(second.File())) << "which does not depend on it";
}

TEST(HistoryOf, RefusesChangesThatDoNotAscend) {
  Second second;
  second.header = ZoneFileHeader('2', 2);
  second.time = std::string(16, '\0');
  second.index = std::string(2, '\0');
  EXPECT_FALSE(HistoryOf(second.File()));
  second.time[15] = '\x01';
  EXPECT_TRUE(HistoryOf(second.File()));
}

TEST(HistoryOf, RefusesTimesAndOffsetsOutOfBounds) {
  Second late;
  late.time = "\x7F" + std::string(7, '\xFF');
  EXPECT_FALSE(HistoryOf(late.File()));
  Second far;
  far.type = std::string("\x7F\xFF\xFF\xFF\0\0", 6);
  EXPECT_FALSE(HistoryOf(far.File()));
}

TEST(HistoryOf, RefusesAFileThatCountsLeapSeconds) {
  Second second;
  second.header[31] = '\x01';
  second.names += std::string(12, '\0');
  EXPECT_FALSE(HistoryOf(second.File()));
}

TEST(HistoryOf, RefusesAFileWithoutTypes) {
  Second second;
  second.header = ZoneFileHeader('2', 0);
  second.header[39] = '\0';
  second.time = second.index = second.type = "";
  EXPECT_FALSE(HistoryOf(second.File()));
}

TEST(FooterOf, IsTheLastLine) {
  EXPECT_EQ(FooterOf(ZoneFile("CET-1CEST,M3.5.0,M10.5.0/3")), "CET-1CEST,M3.5.0,M10.5.0/3");
  EXPECT_EQ(FooterOf(ZoneFile("")), "");
}

TEST(FooterOf, RefusesDamagedFiles) {
  const std::string whole = ZoneFile("CET-1");
  for (std::size_t length = 0; length < whole.size(); ++length) {
    EXPECT_FALSE(FooterOf(whole.substr(0, length))) << length;
    EXPECT_FALSE(HistoryOf(whole.substr(0, length)) && FooterOf(whole.substr(0, length)));
  }
  EXPECT_FALSE(FooterOf(ZoneFile("CET-1", '\0'))) << "the first version has no rule";
  std::string huge = whole;
  huge.replace(32, 4, "\xFF\xFF\xFF\xFF");
  EXPECT_FALSE(FooterOf(huge));
}

}  // namespace
}  // namespace calendar
