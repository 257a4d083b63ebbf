#include "desktop/records/wire_values.h"

#include <gtest/gtest.h>

#include <limits>

#include "tests/desktop/fixtures.h"

namespace desktop::testing {
namespace {

using namespace std::chrono;

TEST(NumberFromText, ReadsTheDigitsThatTheTextBeginsWith) {
  const struct {
    const char* text;
    int value;
  } cases[] = {{"15", 15},  {"-540", -540},
               {" +7", 7},  {"12abc", 12},
               {"abc", 0},  {"", 0},
               {"-", 0},    {"+-5", 0},
               {"- 5", 0},  {"\t3", 3},
               {"0x10", 0}, {"007", 7},
               {"3, 5", 3}, {"2147483647", 2147483647}};
  for (const auto& each : cases) EXPECT_EQ(NumberFromText(each.text), each.value) << each.text;
  EXPECT_EQ(NumberFromText("99999999999"), std::numeric_limits<int>::max());
  EXPECT_EQ(NumberFromText("-99999999999"), std::numeric_limits<int>::min());
}

TEST(DateFromText, ReadsTheDayAndNothingBehindIt) {
  EXPECT_EQ(DateFromText("20080229"), Day(2008, 2, 29));
  EXPECT_EQ(DateFromText("20080229T134501"), Day(2008, 2, 29));
  EXPECT_EQ(DateFromText("20080229 and so on"), Day(2008, 2, 29));
  for (const char* text : {"20080231", "2008-02-15", "20081301", "2008022", "0", "", "-0080215"}) {
    EXPECT_EQ(DateFromText(text), std::nullopt) << text;
  }
}

TEST(DateTimeFromText, NeedsATimeThatExists) {
  EXPECT_EQ(DateTimeFromText("20080215T134501"), sys_days{2008y / 2 / 15} + 13h + 45min + 1s);
  for (const char* text : {"20080215", "20080215T1345", "20080215T240000", "20080215T236000",
                           "20080215T235960", "20080215t134501", "20080215 134501"}) {
    EXPECT_EQ(DateTimeFromText(text), std::nullopt) << text;
  }
}

TEST(DateTexts, HaveFifteenCharacters) {
  EXPECT_EQ(DateText(Day(1900, 1, 2)), "19000102T000000");
  EXPECT_EQ(DateTimeText(sys_days{2008y / 2 / 15} + 9h + 5min + 7s), "20080215T090507");
}

TEST(ChildNumber, TellsAMissingOneFromAZero) {
  const XmlElement element = ElementOf("<A><B>0</B><C/></A>");
  EXPECT_EQ(ChildNumber(element, "B"), 0);
  EXPECT_EQ(ChildNumber(element, "C"), std::nullopt);
  EXPECT_EQ(ChildNumber(element, "D"), std::nullopt);
  EXPECT_EQ(ChildNumber(element, "D", 3), 3);
}

TEST(ChildIsTrue, TakesNoOtherWordForTrue) {
  for (const char* text : {"FALSE", "true", "True", "1", "TRUE "}) {
    EXPECT_FALSE(ChildIsTrue(ElementOf("<A><B>" + std::string(text) + "</B></A>"), "B")) << text;
  }
  EXPECT_TRUE(ChildIsTrue(ElementOf("<A><B>TRUE</B></A>"), "B"));
}

// Each name with each other one would be 20,000,000,000 comparisons.
TEST(CategoriesFromXml, TakesAnyNumber) {
  XmlElement list{"CATEGORIES", {}, {}};
  for (int i = 0; i < 200000; ++i) {
    list.children.push_back({"CATEGORY", {}, {{"Name", std::to_string(i), {}}}});
  }
  EXPECT_EQ(CategoriesFromXml(&list).size(), 200000U);
}

TEST(CategoriesFromXml, HasEachNameOnce) {
  const XmlElement element = ElementOf(
      "<CATEGORIES><CATEGORY><Name>A</Name></CATEGORY><CATEGORY/><CATEGORY><Name>B</Name>"
      "</CATEGORY><CATEGORY><Name>A</Name></CATEGORY></CATEGORIES>");
  EXPECT_EQ(CategoriesFromXml(&element), (std::vector<std::string>{"A", "B"}));
  EXPECT_TRUE(CategoriesFromXml(nullptr).empty());
}

}  // namespace
}  // namespace desktop::testing
