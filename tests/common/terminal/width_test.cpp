#include "common/terminal/width.h"

#include <gtest/gtest.h>

#include <vector>

namespace terminal::testing {
namespace {

struct Text {
  const char* name;
  std::string text;
  std::size_t width;
};

class Width : public ::testing::TestWithParam<Text> {};

TEST_P(Width, IsThatOfItsCells) {
  EXPECT_EQ(WidthOf(GetParam().text), GetParam().width);
}

TEST_P(Width, IsFilledWithBlanks) {
  const std::string fitted = Fitted(GetParam().text, GetParam().width + 2);
  EXPECT_EQ(fitted, GetParam().text + "  ");
}

TEST_P(Width, JustFits) {
  EXPECT_EQ(Cut(GetParam().text, GetParam().width), GetParam().text);
}

TEST_P(Width, IsNeverMoreThanAskedFor) {
  for (std::size_t width = 0; width < GetParam().width; ++width) {
    EXPECT_LE(WidthOf(Cut(GetParam().text, width)), width);
    EXPECT_EQ(WidthOf(Fitted(GetParam().text, width)), width);
  }
}

INSTANTIATE_TEST_SUITE_P(
    Texts, Width,
    ::testing::Values(Text{"Nothing", "", 0}, Text{"Ascii", "Ada Brook", 9},
                      Text{"Latin", "Åsa Björkman", 12}, Text{"Japanese", "山田太郎", 8},
                      Text{"HalfwidthKatakana", "ﾔﾏﾀﾞ", 4}, Text{"Korean", "김민준", 6},
                      Text{"KoreanInParts", "\u1100\u1175\u11B7\u1106\u1175\u11AB", 4},
                      Text{"CombiningMarks", "A\u030Asa Bjo\u0308rkman", 12},
                      Text{"Vietnamese", "Nguye\u0302\u0303n", 6}, Text{"Arabic", "ليلى", 4},
                      Text{"ArabicWithMarks", "مُحَمَّد", 4}, Text{"Thai", "สมชาย", 5},
                      Text{"Picture", "🎂 Ada", 6}, Text{"Flag", "🇸🇪", 2},
                      Text{"PictureInColour", "❤\uFE0F", 1}, Text{"NotYetACharacter", "\u0378", 1},
                      Text{"NoUtf8", "a\xFF\xC3", 3}),
    [](const auto& each) { return std::string(each.param.name); });

TEST(Cut, EndsInAnEllipsis) {
  EXPECT_EQ(Cut("Ada Brook", 5), "Ada …");
  EXPECT_EQ(Cut("Ada", 1), "…");
  EXPECT_EQ(Cut("Ada", 0), "");
}

TEST(Cut, LeavesNoHalfOfAWideCharacter) {
  EXPECT_EQ(Cut("山田太郎", 5), "山田…");
  EXPECT_EQ(Cut("山田太郎", 4), "山…");
  EXPECT_EQ(Fitted("山田太郎", 4), "山… ");
}

TEST(Cut, LeavesMarksOnTheirCharacter) {
  EXPECT_EQ(Cut("cafe\u0301s", 4), "caf…");
  EXPECT_EQ(Cut("cafe\u0301", 4), "cafe\u0301");
  EXPECT_EQ(Cut("e\u0301e\u0301e\u0301", 2), "e\u0301…");
}

TEST(Cut, PartsNoPictureOfSeveralCharacters) {
  EXPECT_EQ(Cut("🇸🇪🇯🇵", 3), "🇸🇪…");
  EXPECT_EQ(Cut("🇸🇪🇯🇵", 2), "…");
  EXPECT_EQ(Cut("👍🏽 yes", 4), "…") << "a hand and its colour have four cells";
  EXPECT_EQ(Cut("👍🏽 yes", 5), "👍🏽…");
  EXPECT_EQ(Cut("\u1100\u1175\u11B7\u1106", 3), "\u1100\u1175\u11B7…");
}

}  // namespace
}  // namespace terminal::testing
