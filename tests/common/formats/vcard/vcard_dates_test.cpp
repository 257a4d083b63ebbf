#include "common/formats/vcard/vcard_dates.h"

#include <gtest/gtest.h>

namespace formats {
namespace {

struct DateCase {
  const char* name;
  const char* text;
  std::optional<Date> date;
  const char* problem = "";
};
class ReadDateTest : public ::testing::TestWithParam<DateCase> {};

TEST_P(ReadDateTest, GivesTheDayOrTheReason) {
  const DateReading reading = ReadDate(GetParam().text);
  EXPECT_EQ(reading.date, GetParam().date);
  EXPECT_EQ(reading.problem, GetParam().problem);
}

constexpr char kNoYear[] = "a date without a year cannot be kept";
constexpr char kPartial[] = "a date without a day cannot be kept";
constexpr char kNoDate[] = "not a date";
constexpr char kOutside[] = "no day of the years 1900 to 2999";

INSTANTIATE_TEST_SUITE_P(
    ReadDate, ReadDateTest,
    ::testing::Values(DateCase{"Basic", "19800322", Date{1980, 3, 22}},
                      DateCase{"Extended", "1980-03-22", Date{1980, 3, 22}},
                      DateCase{"Slashes", "1980/3/22", Date{1980, 3, 22}},
                      DateCase{"Dots", "1980.03.22", Date{1980, 3, 22}},
                      DateCase{"ShortParts", "1980-3-2", Date{1980, 3, 2}},
                      DateCase{"Blanks", " 1980-03-22 ", Date{1980, 3, 22}},
                      DateCase{"WithTime", "1980-03-22T12:30:00Z", Date{1980, 3, 22}},
                      DateCase{"BasicWithTimeAndZone", "20090808T1430-0500", Date{2009, 8, 8}},
                      DateCase{"WithTimeBehindABlank", "1980-03-22 00:00", Date{1980, 3, 22}},
                      DateCase{"WithZ", "1980-03-22Z", Date{1980, 3, 22}},
                      DateCase{"First", "1900-01-01", Date{1900, 1, 1}},
                      DateCase{"Last", "29991231", Date{2999, 12, 31}},
                      DateCase{"LeapDay", "2000-02-29", Date{2000, 2, 29}},
                      DateCase{"NoLeapDay", "1900-02-29", std::nullopt, kOutside},
                      DateCase{"TooEarly", "18991231", std::nullopt, kOutside},
                      DateCase{"TooLate", "3000-01-01", std::nullopt, kOutside},
                      DateCase{"Month13", "1980-13-01", std::nullopt, kOutside},
                      DateCase{"Day0", "19800300", std::nullopt, kOutside},
                      DateCase{"Zeros", "00000000", std::nullopt, kOutside},
                      DateCase{"MonthAndDay", "--0322", std::nullopt, kNoYear},
                      DateCase{"MonthAndDayExtended", "--03-22", std::nullopt, kNoYear},
                      DateCase{"DayAlone", "---22", std::nullopt, kNoYear},
                      DateCase{"YearAlone", "1980", std::nullopt, kPartial},
                      DateCase{"YearAndMonth", "1980-03", std::nullopt, kPartial},
                      DateCase{"YearAndMonthBasic", "198003", std::nullopt, kPartial},
                      DateCase{"Text", "circa 1800", std::nullopt, kNoDate},
                      DateCase{"AmericanOrder", "03/22/1980", std::nullopt, kNoDate},
                      DateCase{"SevenDigits", "1980032", std::nullopt, kNoDate},
                      DateCase{"TrailingText", "1980-03-22abc", std::nullopt, kNoDate},
                      DateCase{"SeparatorAlone", "1980-", std::nullopt, kNoDate},
                      DateCase{"Empty", "", std::nullopt, kNoDate}),
    [](const auto& test) { return std::string(test.param.name); });

TEST(FormatDate, PadsItsParts) {
  EXPECT_EQ(FormatDate({1980, 3, 2}, "-"), "1980-03-02");
  EXPECT_EQ(FormatDate({2999, 12, 31}, ""), "29991231");
}

}  // namespace
}  // namespace formats
