#include "common/formats/icalendar/icalendar_values.h"

#include <gtest/gtest.h>

#include "common/formats/icalendar/icalendar_alarm.h"
#include "tests/common/formats/icalendar/calendar_support.h"

namespace formats::testing {
namespace {

std::string Show(std::string_view text, const std::string& valueKind = "") {
  Property property;
  if (!valueKind.empty()) property.parameters.emplace_back("VALUE", valueKind);
  const std::optional<TimeValue> value = ParseTimeValue(property, text);
  if (!value) return "none";
  return (value->isDate ? IsoDate(DayOf(value->time)) : IsoDateTime(value->time)) +
         (value->isUtc ? "Z" : "");
}

TEST(ParseTimeValue, TakesDatesAndTimes) {
  EXPECT_EQ(Show("20080215"), "2008-02-15");
  EXPECT_EQ(Show("20080215T134501"), "2008-02-15T13:45:01");
  EXPECT_EQ(Show("20080215T134501Z"), "2008-02-15T13:45:01Z");
  EXPECT_EQ(Show(" 20080229t1345 "), "2008-02-29T13:45:00");
}

TEST(ParseTimeValue, TakesTheExtendedForm) {
  EXPECT_EQ(Show("2008-02-15"), "2008-02-15");
  EXPECT_EQ(Show("2008-02-15T13:45:01"), "2008-02-15T13:45:01");
  EXPECT_EQ(Show("2008-02-15T13:45:01+01:00"), "2008-02-15T12:45:01Z");
}

TEST(ParseTimeValue, TakesMidnightAsTheHour24AndALeapSecond) {
  EXPECT_EQ(Show("20081231T240000"), "2009-01-01T00:00:00");
  EXPECT_EQ(Show("20081231T235960Z"), "2008-12-31T23:59:59Z");
}

TEST(ParseTimeValue, TakesATimeThatIsSaidToBeADateAsThatDate) {
  EXPECT_EQ(Show("20080215T000000Z", "DATE"), "2008-02-15");
  EXPECT_EQ(Show("20080215", "DATE"), "2008-02-15");
}

TEST(ParseTimeValue, RefusesWhatIsNone) {
  for (const char* text : {"", "2008", "20080230", "20081301", "20080215T", "20080215T1", "x",
                           "20080215T250000", "20080215T240001", "20080215T136000",
                           "20031114T18300", "20080215T134500+0100", "20080215T134500ZZ"}) {
    EXPECT_EQ(Show(text), "none") << text;
  }
}

TEST(ParseTimeValue, JoinsAZoneNameThatWasNotQuoted) {
  Property property;
  property.parameters = {{"TZID", "Canberra"}, {"TZID", "Melbourne"}};
  EXPECT_EQ(ParseTimeValue(property, "20080215T134500")->tzid, "Canberra, Melbourne");
  EXPECT_EQ(ParseTimeValue(property, "20080215T134500Z")->tzid, "");
}

std::string ShowSpan(std::string_view text) {
  const std::optional<Span> span = ParseSpan(text);
  if (!span) return "none";
  return std::to_string(span->days.count()) + " " + std::to_string(span->seconds.count());
}

TEST(ParseSpan, TakesDurations) {
  EXPECT_EQ(ShowSpan("PT15M"), "0 900");
  EXPECT_EQ(ShowSpan("-P1DT2H3M4S"), "-1 -7384");
  EXPECT_EQ(ShowSpan("+P2W"), "14 0");
  EXPECT_EQ(ShowSpan(" pt0s "), "0 0");
  EXPECT_EQ(ShowSpan("PT90M"), "0 5400");
}

TEST(ParseSpan, RefusesWhatIsNone) {
  for (const char* text : {"", "P", "PT", "15M", "P15M", "PT1D", "PT15", "PTM", "P-1D", "P1DT1Hx",
                           "PT99999999999S", "P9999999999D", "P1500000DT1S"}) {
    EXPECT_EQ(ShowSpan(text), "none") << text;
  }
}

TEST(ParseNumber, TakesWholeNumbers) {
  EXPECT_EQ(ParseNumber(" 12 "), 12);
  EXPECT_EQ(ParseNumber("999999999"), 999'999'999);
  for (const char* text : {"", "-1", "1.5", "1000000000", "x"}) {
    EXPECT_EQ(ParseNumber(text), std::nullopt) << text;
  }
}

TEST(MinutesBefore, CutsToWholeMinutesAndToWhatANumberHolds) {
  using std::chrono::seconds;
  EXPECT_EQ(MinutesBefore(seconds(-900)), 15);
  EXPECT_EQ(MinutesBefore(seconds(900)), -15);
  EXPECT_EQ(MinutesBefore(seconds(-90)), 1);
  EXPECT_EQ(MinutesBefore(std::chrono::days(-2'000'000)), 2'147'483'647);
}

}  // namespace
}  // namespace formats::testing
