#include "desktop/commands/clock_text.h"

#include <gtest/gtest.h>

#include <string>

namespace desktop::testing {
namespace {

using namespace std::chrono;

UtcTime At(int y, unsigned mo, unsigned d, int h, int mi, int s) {
  return sys_days{year{y} / month{mo} / day{d}} + hours{h} + minutes{mi} + seconds{s};
}

TEST(ParseTime, IsUtcUnlessAZoneIsNamed) {
  EXPECT_EQ(ParseTime("2008-02-15T09:05:07"), At(2008, 2, 15, 9, 5, 7));
  EXPECT_EQ(ParseTime("2008-02-15T09:05:07Z"), At(2008, 2, 15, 9, 5, 7));
  EXPECT_EQ(ParseTime("2008-02-15T09:05+01:30"), At(2008, 2, 15, 7, 35, 0));
  EXPECT_EQ(ParseTime("2008-12-31T23:30:00-05:00"), At(2009, 1, 1, 4, 30, 0));
}

TEST(ParseTime, RefusesTimesThatDoNotExist) {
  EXPECT_EQ(ParseTime("2007-02-29T00:00Z"), std::nullopt);
  EXPECT_EQ(ParseTime("2008-02-15T24:00Z"), std::nullopt);
  EXPECT_EQ(ParseTime("yesterday"), std::nullopt);
}

TEST(FormatTime, ReadsBack) {
  EXPECT_EQ(FormatTime(At(2008, 2, 15, 9, 5, 7)), "2008-02-15T09:05:07Z");
  EXPECT_EQ(ParseTime(FormatTime(At(1999, 12, 31, 23, 59, 59))), At(1999, 12, 31, 23, 59, 59));
}

TEST(SystemTimeBytes, HoldsEightLittleEndianFieldsWithTheWeekday) {
  const UtcTime time = At(2008, 2, 15, 9, 5, 7) + milliseconds{513};  // a Friday
  const std::string expected("\xD8\x07\x02\0\x05\0\x0F\0\x09\0\x05\0\x07\0\x01\x02", 16);
  EXPECT_EQ(SystemTimeBytes(time), expected);
  EXPECT_EQ(TimeFromSystemTime(expected), time);
}

TEST(SystemTimeBytes, HasNoYearBefore1601) {
  EXPECT_EQ(SystemTimeBytes(At(1600, 12, 31, 23, 59, 59)), std::nullopt);
  EXPECT_TRUE(SystemTimeBytes(At(1601, 1, 1, 0, 0, 0)).has_value());
}

TEST(TimeFromSystemTime, RefusesBytesThatHoldNoTime) {
  EXPECT_EQ(TimeFromSystemTime(std::string(16, '\0')), std::nullopt);
  EXPECT_EQ(TimeFromSystemTime("short"), std::nullopt);
  std::string bytes = *SystemTimeBytes(At(2008, 2, 15, 9, 5, 7));
  bytes[8] = 24;  // the hour
  EXPECT_EQ(TimeFromSystemTime(bytes), std::nullopt);
}

}  // namespace
}  // namespace desktop::testing
