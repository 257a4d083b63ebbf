#include "common/formats/vcard/vcard_dates.h"

#include <gtest/gtest.h>

namespace formats {
namespace {

constexpr std::string_view kNoYear = "a date without a year cannot be kept";
constexpr std::string_view kPartial = "a date without a day cannot be kept";
constexpr std::string_view kNoDate = "not a date";
constexpr std::string_view kOutside = "no day of the years 1900 to 2999";

TEST(ReadDate, GivesTheDayOrTheReason) {
  struct Case {
    std::string_view text;
    std::string_view expected;
  };
  const Case cases[] = {
      {"19800322", "1980-03-22"},
      {"1980-03-22", "1980-03-22"},
      {"1980/3/22", "1980-03-22"},
      {"1980.03.22", "1980-03-22"},
      {"1980-3-2", "1980-03-02"},
      {" 1980-03-22 ", "1980-03-22"},
      {"1980-03-22T12:30:00Z", "1980-03-22"},
      {"20090808T1430-0500", "2009-08-08"},
      {"1980-03-22 00:00", "1980-03-22"},
      {"1980-03-22Z", "1980-03-22"},
      {"1900-01-01", "1900-01-01"},
      {"29991231", "2999-12-31"},
      {"2000-02-29", "2000-02-29"},
      {"1900-02-29", kOutside},
      {"18991231", kOutside},
      {"3000-01-01", kOutside},
      {"1980-13-01", kOutside},
      {"19800300", kOutside},
      {"00000000", kOutside},
      {"--0322", kNoYear},
      {"--03-22", kNoYear},
      {"---22", kNoYear},
      {"1980", kPartial},
      {"1980-03", kPartial},
      {"198003", kPartial},
      {"circa 1800", kNoDate},
      {"03/22/1980", kNoDate},
      {"1980032", kNoDate},
      {"1980-03-22abc", kNoDate},
      {"1980-", kNoDate},
      {"", kNoDate},
  };
  for (const Case& c : cases) {
    const DateReading reading = ReadDate(c.text);
    EXPECT_EQ(reading.date ? IsoDate(*reading.date) : reading.problem, c.expected) << c.text;
    EXPECT_EQ(reading.date.has_value(), reading.problem.empty()) << c.text;
  }
}

}  // namespace
}  // namespace formats
