#include "desktop/wire/oid.h"

#include <gtest/gtest.h>

namespace desktop {
namespace {

TEST(ParseOid, TakesSignedAndUnsignedDecimalsAndHexadecimal) {
  EXPECT_EQ(ParseOid("12"), 12U);
  EXPECT_EQ(ParseOid("-1"), 0xFFFFFFFFU);
  EXPECT_EQ(ParseOid("-2147483648"), 0x80000000U);
  EXPECT_EQ(ParseOid("4294967295"), 0xFFFFFFFFU);
  EXPECT_EQ(ParseOid("0x80000001"), 0x80000001U);
}

TEST(ParseOid, RefusesZeroOtherTextAndWhatIsTooLarge) {
  for (const char* text : {"", "0", "-0", "12 ", "1x", "0x", "0x-1", "4294967296", "-2147483649"}) {
    EXPECT_EQ(ParseOid(text), std::nullopt) << text;
  }
}

TEST(OidAttribute, IsSigned) {
  EXPECT_EQ(OidAttribute(12), "12");
  EXPECT_EQ(OidAttribute(0x80000000U), "-2147483648");
}

}  // namespace
}  // namespace desktop
