#include "common/formats/vcard/personal_name.h"

#include <gtest/gtest.h>

namespace formats {
namespace {

struct NameCase {
  const char* name;
  const char* text;
  PersonalName parts;  // title, first, middle, last, suffix
};
class SplitFullNameTest : public ::testing::TestWithParam<NameCase> {};

TEST_P(SplitFullNameTest, FindsTheParts) {
  const PersonalName parts = SplitFullName(GetParam().text);
  EXPECT_EQ(parts.title, GetParam().parts.title);
  EXPECT_EQ(parts.first, GetParam().parts.first);
  EXPECT_EQ(parts.middle, GetParam().parts.middle);
  EXPECT_EQ(parts.last, GetParam().parts.last);
  EXPECT_EQ(parts.suffix, GetParam().parts.suffix);
}

INSTANTIATE_TEST_SUITE_P(
    SplitFullName, SplitFullNameTest,
    ::testing::Values(
        NameCase{"FirstLast", "Ann Lee", {"", "Ann", "", "Lee", ""}},
        NameCase{"Middle", "Ann Mary Sue Lee", {"", "Ann", "Mary Sue", "Lee", ""}},
        NameCase{"OneWord", "Madonna", {"", "Madonna", "", "", ""}},
        NameCase{"NoBlanksAtAll", "山田太郎", {"", "山田太郎", "", "", ""}},
        NameCase{"TitleAndSuffix", "Dr. Ann Lee Jr.", {"Dr.", "Ann", "", "Lee", "Jr."}},
        NameCase{"TwoTitles", "Prof. Dr. Ann Lee", {"Prof. Dr.", "Ann", "", "Lee", ""}},
        NameCase{"SuffixAfterComma", "Ann Lee, PhD", {"", "Ann", "", "Lee", "PhD"}},
        NameCase{"LastFirst", "Lee, Ann", {"", "Ann", "", "Lee", ""}},
        NameCase{"LastFirstMiddle", "Lee, Ann Mary", {"", "Ann", "Mary", "Lee", ""}},
        NameCase{"LastTitleFirst", "Lee, Dr. Ann", {"Dr.", "Ann", "", "Lee", ""}},
        NameCase{"LastFirstSuffix", "Lee, Ann, Jr.", {"", "Ann", "", "Lee", "Jr."}},
        NameCase{"TwoWordLastFirst", "de la Cruz, Ana", {"", "Ana", "", "de la Cruz", ""}},
        NameCase{"Particles", "Jan van der Berg", {"", "Jan", "", "van der Berg", ""}},
        NameCase{"ParticleAsFirstWord", "Van Morrison", {"", "Van", "", "Morrison", ""}},
        NameCase{"TitleAlone", "Dr.", {"", "Dr.", "", "", ""}},
        NameCase{"CommaAtTheEnd", "Lee,", {"", "Lee", "", "", ""}},
        NameCase{"Blanks", "  Ann \t Lee ", {"", "Ann", "", "Lee", ""}},
        NameCase{"Empty", "", {"", "", "", "", ""}}),
    [](const auto& test) { return std::string(test.param.name); });

TEST(JoinFullName, LeavesOutWhatIsBlank) {
  EXPECT_EQ(JoinFullName({"Dr.", "Ann", " ", "Lee", "Jr."}), "Dr. Ann Lee Jr.");
  EXPECT_EQ(JoinFullName({}), "");
}

TEST(IsMadeOfWords, KnowsWordsInAnyCaseAndOrder) {
  const std::string_view texts[] = {"Ann Mary", "O'Brien-Lee", "山田", "花子"};
  for (const char* const name :
       {"", "ann", "LEE, Ann", "Ann M. Lee", "Obrien", "山田花子", "a m l"}) {
    EXPECT_TRUE(IsMadeOfWords(name, texts)) << name;
  }
  for (const char* const name : {"Anne", "Ann X.", "Stone", "山田太郎"}) {
    EXPECT_FALSE(IsMadeOfWords(name, texts)) << name;
  }
}

}  // namespace
}  // namespace formats
