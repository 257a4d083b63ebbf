#include "common/formats/items/message_time.h"

#include <gtest/gtest.h>
#include <rapidcheck/gtest.h>

#include "tests/common/formats/items/message_support.h"

namespace formats::testing {
namespace {

struct TimeCase {
  const char* name;
  const char* text;
  const char* written;  // null for no time
};
class MessageTimeTest : public ::testing::TestWithParam<TimeCase> {};

TEST_P(MessageTimeTest, IsReadAndWritten) {
  const std::optional<MessageTime> time = ParseMessageTime(GetParam().text);
  ASSERT_EQ(time.has_value(), GetParam().written != nullptr);
  if (!time) return;
  EXPECT_EQ(FormatMessageTime(*time), GetParam().written);
}

INSTANTIATE_TEST_SUITE_P(
    MessageTime, MessageTimeTest,
    ::testing::Values(
        TimeCase{"Utc", "2008-02-15T13:45:01Z", "2008-02-15T13:45:01Z"},
        TimeCase{"Milliseconds", "2008-02-15T13:45:01.250Z", "2008-02-15T13:45:01.250Z"},
        TimeCase{"OneDigit", "2008-02-15T13:45:01.5Z", "2008-02-15T13:45:01.500Z"},
        TimeCase{"Comma", "2008-02-15T13:45:01,007Z", "2008-02-15T13:45:01.007Z"},
        TimeCase{"MoreDigitsAreCutOff", "2008-02-15T13:45:01.9999999Z", "2008-02-15T13:45:01.999Z"},
        TimeCase{"East", "2008-02-15T13:45:01+01:00", "2008-02-15T12:45:01Z"},
        TimeCase{"WestWithMilliseconds", "2008-02-15T23:45:01.250-05:30",
                 "2008-02-16T05:15:01.250Z"},
        TimeCase{"NoOffsetIsUtc", "2008-02-15 13:45", "2008-02-15T13:45:00Z"},
        TimeCase{"Before1970", "1969-12-31T23:59:59.999Z", "1969-12-31T23:59:59.999Z"},
        TimeCase{"Earliest", "1601-01-01T00:00:00Z", "1601-01-01T00:00:00Z"},
        TimeCase{"Latest", "9999-12-31T23:59:59.999Z", "9999-12-31T23:59:59.999Z"},
        TimeCase{"TooEarly", "1600-12-31T23:59:59Z", nullptr},
        TimeCase{"TooLate", "9999-12-31T23:59:59-01:00", nullptr},
        TimeCase{"PointAlone", "2008-02-15T13:45:01.Z", nullptr},
        TimeCase{"NoSuchDay", "2008-02-30T13:45:01Z", nullptr}, TimeCase{"Empty", "", nullptr},
        TimeCase{"Text", "yesterday", nullptr}),
    [](const auto& test) { return std::string(test.param.name); });

TEST(MessageTime, IsAFileTimeAndBack) {
  const MessageTime time = TimeOf("2008-02-15T13:45:01.250Z");
  EXPECT_EQ(ToFileTime(time), 128475567012500000);
  EXPECT_EQ(TimeFromFileTime(128475567012500000), time);
  EXPECT_EQ(TimeFromFileTime(128475567012509999), time);
  EXPECT_EQ(TimeFromFileTime(0), TimeOf("1601-01-01T00:00:00Z"));
}

TEST(MessageTime, KeepsNoFileTimeBeyondItsYears) {
  EXPECT_EQ(TimeFromFileTime(-1), std::nullopt);
  EXPECT_EQ(TimeFromFileTime(INT64_MAX), std::nullopt);
  const std::int64_t last = ToFileTime(TimeOf("9999-12-31T23:59:59.999Z"));
  EXPECT_TRUE(TimeFromFileTime(last + 9'999).has_value());
  EXPECT_EQ(TimeFromFileTime(last + 10'000), std::nullopt);
}

TEST(MessageTime, WritesNothingForATimeThatIsNotKept) {
  EXPECT_EQ(FormatMessageTime(MessageTime::max()), "");
  EXPECT_EQ(TimeFromMilliseconds(INT64_MAX), std::nullopt);
}

RC_GTEST_PROP(MessageTime, ComesBackFromFileTimeAndText, ()) {
  const std::int64_t first = TimeOf("1601-01-01T00:00:00Z").time_since_epoch().count();
  const std::int64_t last = TimeOf("9999-12-31T23:59:59Z").time_since_epoch().count();
  const MessageTime time{
      std::chrono::milliseconds(*rc::gen::resize(1000, rc::gen::inRange(first, last)))};
  RC_ASSERT(TimeFromFileTime(ToFileTime(time)) == std::optional(time));
  RC_ASSERT(ParseMessageTime(FormatMessageTime(time)) == std::optional(time));
}

}  // namespace
}  // namespace formats::testing
