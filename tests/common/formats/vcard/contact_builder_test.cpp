#include <gtest/gtest.h>

#include "tests/common/formats/vcard/card_support.h"
#include "tests/support/case_lines.h"

namespace formats::testing {
namespace {

using corvane::testing::CaseLine;
using corvane::testing::CaseName;

// Cells: the card's version, its lines, and each text of the contact and each notice.
class CardTest : public ::testing::TestWithParam<CaseLine> {};

TEST_P(CardTest, IsRead) {
  const std::vector<std::string>& cells = GetParam().cells;
  const ParsedContact read = ReadCard(cells.at(0), cells.at(1));
  std::vector<std::string> texts = Texts(read.contact);
  for (const std::string& notice : Texts(read.notices)) texts.push_back(notice);
  EXPECT_EQ(texts, std::vector<std::string>(cells.begin() + 2, cells.end()));
}

auto Cases(std::string_view section) {
  return ::testing::ValuesIn(
      corvane::testing::CasesOf("tests/common/formats/vcard/cards.txt", section));
}
INSTANTIATE_TEST_SUITE_P(Name, CardTest, Cases("Name"), CaseName);
INSTANTIATE_TEST_SUITE_P(TextField, CardTest, Cases("TextField"), CaseName);
INSTANTIATE_TEST_SUITE_P(NotKept, CardTest, Cases("NotKept"), CaseName);
INSTANTIATE_TEST_SUITE_P(DateProperty, CardTest, Cases("DateProperty"), CaseName);
INSTANTIATE_TEST_SUITE_P(Phone, CardTest, Cases("Phone"), CaseName);
INSTANTIATE_TEST_SUITE_P(Email, CardTest, Cases("Email"), CaseName);
INSTANTIATE_TEST_SUITE_P(Address, CardTest, Cases("Address"), CaseName);
INSTANTIATE_TEST_SUITE_P(Categories, CardTest, Cases("Categories"), CaseName);
INSTANTIATE_TEST_SUITE_P(Uid, CardTest, Cases("Uid"), CaseName);

TEST(ContactBuilder, ReadsTheReadingOfANameThatTelephonesGive) {
  const ParsedContact read =
      ReadCard("2.1", "SOUND;X-IRMC-N;CHARSET=Shift_JIS:\xD4\xCF\xC0\xDE;\xC0\xDB\xB3;;;");
  EXPECT_EQ(read.contact,
            ContactOf({{Field::kYomiLastName, "ﾔﾏﾀﾞ"}, {Field::kYomiFirstName, "ﾀﾛｳ"}}));
  EXPECT_TRUE(read.notices.empty());
}

}  // namespace
}  // namespace formats::testing
