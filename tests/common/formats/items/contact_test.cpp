#include "common/formats/items/contact.h"

#include <gtest/gtest.h>

#include <set>

#include "tests/common/formats/vcard/card_support.h"

namespace formats {
namespace {

using testing::ContactOf;
using testing::Field;

TEST(ContactFieldName, IsThePropertysName) {
  EXPECT_EQ(ContactFieldName(Field::kEmail1Address), "Email1Address");
  EXPECT_EQ(ContactFieldName(Field::kBusiness2TelephoneNumber), "Business2TelephoneNumber");
  EXPECT_EQ(ContactFieldName(Field::kBody), "Body");
  EXPECT_EQ(ContactFieldName(Field::kAssistantTelephoneNumber), "AssistantTelephoneNumber");
}

TEST(ContactFieldName, IsDifferentForEachField) {
  std::set<std::string_view> names;
  for (std::size_t i = 0; i < kContactFieldCount; ++i) {
    names.insert(ContactFieldName(static_cast<Field>(i)));
  }
  EXPECT_EQ(names.size(), kContactFieldCount);
  EXPECT_FALSE(names.contains(""));
}

struct NameCase {
  const char* name;
  testing::FieldTexts fields;
  const char* expected;
};
class DisplayNameTest : public ::testing::TestWithParam<NameCase> {};

TEST_P(DisplayNameTest, IsWhatThePersonIsCalled) {
  EXPECT_EQ(DisplayName(ContactOf(GetParam().fields)), GetParam().expected);
}

INSTANTIATE_TEST_SUITE_P(
    DisplayName, DisplayNameTest,
    ::testing::Values(
        NameCase{"Both", {{Field::kFirstName, "Ann"}, {Field::kLastName, "Lee"}}, "Lee, Ann"},
        NameCase{"LastAlone", {{Field::kLastName, "Lee"}}, "Lee"},
        NameCase{"FirstAlone", {{Field::kFirstName, "Ann"}, {Field::kCompanyName, "X"}}, "Ann"},
        NameCase{"FileAs", {{Field::kFileAs, "Plumber"}, {Field::kCompanyName, "X"}}, "Plumber"},
        NameCase{"Company", {{Field::kCompanyName, "X"}, {Field::kEmail1Address, "a@b"}}, "X"},
        NameCase{"SecondAddress", {{Field::kEmail2Address, "a@b"}}, "a@b"},
        NameCase{"Phone", {{Field::kHome2TelephoneNumber, "123"}}, "123"},
        NameCase{"BlanksAreNoName", {{Field::kFirstName, " \t"}, {Field::kCompanyName, "X"}}, "X"},
        NameCase{"OnOneLine", {{Field::kLastName, "A\r\nB\x1B[2J"}}, "A  B [2J"},
        NameCase{"Nothing", {}, "(no name)"},
        NameCase{"OnlyANote", {{Field::kBody, "note"}}, "(no name)"}),
    [](const auto& test) { return std::string(test.param.name); });

}  // namespace
}  // namespace formats
