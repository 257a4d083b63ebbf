#include "desktop/records/recurrence_xml.h"

#include <gtest/gtest.h>

#include "tests/desktop/fixtures.h"

namespace desktop::testing {
namespace {

using calendar::Pattern;
using calendar::PatternType;

std::optional<Pattern> ParsedPattern(const std::string& children) {
  return PatternFromXml(ElementOf("<RECURRENCE>" + children + "</RECURRENCE>"));
}

struct Case {
  const char* name;
  Pattern pattern;
  std::string xml;  // without the end
};

class EveryType : public ::testing::TestWithParam<Case> {};

TEST_P(EveryType, IsWrittenAndReadWithoutAnEnd) {
  const std::string xml = GetParam().xml + "<END_DATE>0</END_DATE>";
  EXPECT_EQ(PatternToXml(GetParam().pattern), xml);
  EXPECT_EQ(ParsedPattern(xml), GetParam().pattern);
}

TEST_P(EveryType, IsWrittenAndReadWithANumberOfOccurrences) {
  Pattern pattern = GetParam().pattern;
  pattern.occurrences = 10;
  const std::string xml = GetParam().xml + "<Occurrences>10</Occurrences>";
  EXPECT_EQ(PatternToXml(pattern), xml);
  EXPECT_EQ(ParsedPattern(xml), pattern);
}

TEST_P(EveryType, IsWrittenAndReadWithALastDay) {
  Pattern pattern = GetParam().pattern;
  pattern.until = Day(2009, 12, 31);
  const std::string xml = GetParam().xml + "<END_DATE>20091231T000000</END_DATE>";
  EXPECT_EQ(PatternToXml(pattern), xml);
  EXPECT_EQ(ParsedPattern(xml), pattern);
}

INSTANTIATE_TEST_SUITE_P(
    Types, EveryType,
    ::testing::Values(
        Case{"Daily", {.type = PatternType::kDaily}, "<TYPE>DAILY</TYPE>"},
        Case{"EveryThirdDay",
             {.type = PatternType::kDaily, .interval = 3},
             "<TYPE>DAILY</TYPE><FREQUENCY>3</FREQUENCY>"},
        Case{"Weekly",
             {.type = PatternType::kWeekly, .interval = 2, .daysOfWeek = 42},
             "<TYPE>WEEKLY</TYPE><DAYS_OF_WEEK>1, 3, 5</DAYS_OF_WEEK><FREQUENCY>2</FREQUENCY>"},
        Case{"EveryDayOfTheWeek",
             {.type = PatternType::kWeekly, .daysOfWeek = 127},
             "<TYPE>WEEKLY</TYPE><DAYS_OF_WEEK>0, 1, 2, 3, 4, 5, 6</DAYS_OF_WEEK>"},
        Case{"Monthly",
             {.type = PatternType::kMonthly, .interval = 999, .dayOfMonth = 31},
             "<TYPE>MONTHLY_BY_DATE</TYPE><DAY_OF_MONTH>31</DAY_OF_MONTH>"
             "<FREQUENCY>999</FREQUENCY>"},
        Case{"SecondTuesdayOfEverySecondMonth",
             {.type = PatternType::kMonthNth, .interval = 2, .daysOfWeek = 4, .instance = 2},
             "<TYPE>MONTHLY_BY_DAY</TYPE><WEEK_OF_MONTH>1</WEEK_OF_MONTH>"
             "<DAYS_OF_WEEK>2</DAYS_OF_WEEK><FREQUENCY>2</FREQUENCY>"},
        Case{"Yearly",
             {.type = PatternType::kYearly, .dayOfMonth = 25, .monthOfYear = 12},
             "<TYPE>YEARLY_BY_DATE</TYPE><DAY>25</DAY><MONTH>12</MONTH>"},
        Case{"LastSundayOfOctober",
             {.type = PatternType::kYearNth, .daysOfWeek = 1, .instance = 5, .monthOfYear = 10},
             "<TYPE>YEARLY_BY_DAY</TYPE><WEEK_OF_MONTH>4</WEEK_OF_MONTH><MONTH>10</MONTH>"
             "<DAYS_OF_WEEK>0</DAYS_OF_WEEK>"}),
    [](const auto& each) { return std::string(each.param.name); });

TEST(PatternFromXml, TakesTheNumberOfOccurrencesBeforeTheEndDate) {
  const auto pattern = ParsedPattern(
      "<TYPE>DAILY</TYPE><END_DATE>20091231T000000</END_DATE><Occurrences>4</Occurrences>");
  ASSERT_TRUE(pattern);
  EXPECT_EQ(pattern->occurrences, 4);
  EXPECT_EQ(pattern->until, std::nullopt);
}

TEST(PatternFromXml, HasNoEndWithoutOccurrencesOrWithNone) {
  for (const char* end : {"", "<Occurrences>0</Occurrences>", "<Occurrences>-1</Occurrences>",
                          "<END_DATE>0</END_DATE>", "<END_DATE/>", "<END_DATE>never</END_DATE>",
                          "<Occurrences>0</Occurrences><END_DATE>20091231</END_DATE>"}) {
    EXPECT_EQ(ParsedPattern(std::string("<TYPE>DAILY</TYPE>") + end), Pattern{}) << end;
  }
}

TEST(PatternFromXml, ReadsDaysOfTheWeekAsTheAgentDoes) {
  const struct {
    const char* text;
    int mask;
  } cases[] = {{"1, 3, 5", 42}, {"1 3 5", 42}, {"1,3,5", 42}, {"0", 1},   {"6", 64},
               {"1,2 3", 10},   {"1,,2", 7},   {"1, 9", 2},   {"5 5", 64}};
  for (const auto& each : cases) {
    const auto pattern = ParsedPattern("<TYPE>WEEKLY</TYPE><DAYS_OF_WEEK>" +
                                       std::string(each.text) + "</DAYS_OF_WEEK>");
    ASSERT_TRUE(pattern) << each.text;
    EXPECT_EQ(pattern->daysOfWeek, each.mask) << each.text;
  }
}

TEST(PatternFromXml, IsNothingForWhatNoHandheldHas) {
  for (const char* xml :
       {"", "<TYPE/>", "<TYPE>Daily</TYPE>", "<TYPE>HOURLY</TYPE>", "<TYPE>WEEKLY</TYPE>",
        "<TYPE>WEEKLY</TYPE><DAYS_OF_WEEK>9</DAYS_OF_WEEK>",
        "<TYPE>WEEKLY</TYPE><DAYS_OF_WEEK>6 6</DAYS_OF_WEEK>",
        "<TYPE>MONTHLY_BY_DATE</TYPE><DAY>1</DAY>",
        "<TYPE>MONTHLY_BY_DATE</TYPE><DAY_OF_MONTH>32</DAY_OF_MONTH>",
        "<TYPE>MONTHLY_BY_DATE</TYPE><DAY_OF_MONTH>-2147483648</DAY_OF_MONTH>",
        "<TYPE>MONTHLY_BY_DAY</TYPE><WEEK_OF_MONTH>5</WEEK_OF_MONTH><DAYS_OF_WEEK>1</DAYS_OF_WEEK>",
        "<TYPE>MONTHLY_BY_DAY</TYPE><WEEK_OF_MONTH>2147483647</WEEK_OF_MONTH>"
        "<DAYS_OF_WEEK>1</DAYS_OF_WEEK>",
        "<TYPE>YEARLY_BY_DATE</TYPE><DAY_OF_MONTH>1</DAY_OF_MONTH><MONTH>1</MONTH>",
        "<TYPE>YEARLY_BY_DATE</TYPE><DAY>1</DAY><MONTH>13</MONTH>",
        "<TYPE>DAILY</TYPE><FREQUENCY>0</FREQUENCY>",
        "<TYPE>DAILY</TYPE><FREQUENCY>1000</FREQUENCY>",
        "<TYPE>DAILY</TYPE><END_DATE>20090231T000000</END_DATE>"}) {
    EXPECT_EQ(ParsedPattern(xml), std::nullopt) << xml;
  }
}

TEST(PatternFromXml, PaysNoHeedToAnIntervalOfYears) {
  const auto pattern = ParsedPattern(
      "<TYPE>YEARLY_BY_DATE</TYPE><DAY>1</DAY><MONTH>1</MONTH><FREQUENCY>2</FREQUENCY>");
  ASSERT_TRUE(pattern);
  EXPECT_EQ(pattern->interval, 1);
}

}  // namespace
}  // namespace desktop::testing
