#include "desktop/wire/target.h"

#include <gtest/gtest.h>

namespace desktop::testing {
namespace {

TEST(Target, TakesAHostWithOrWithoutAPort) {
  EXPECT_EQ(ParseTarget("handheld"), (Target{"handheld", "2005"}));
  EXPECT_EQ(ParseTarget("handheld:3000"), (Target{"handheld", "3000"}));
  EXPECT_EQ(ParseTarget("10.0.0.1:1"), (Target{"10.0.0.1", "1"}));
}

TEST(Target, TakesAnIpv6AddressInBracketsOrBare) {
  EXPECT_EQ(ParseTarget("[::1]"), (Target{"::1", "2005"}));
  EXPECT_EQ(ParseTarget("[::1]:2006"), (Target{"::1", "2006"}));
  EXPECT_EQ(ParseTarget("fe80::1%eth0"), (Target{"fe80::1%eth0", "2005"}));
}

TEST(Target, RefusesWhatNamesNoPlace) {
  for (const char* text : {"", ":2005", "host:", "host:0", "host:65536", "host:20x", "[::1", "[]",
                           "[::1]2005", "ho st", "a/b"}) {
    EXPECT_EQ(ParseTarget(text), std::nullopt) << text;
  }
}

TEST(Target, IsWrittenWithItsPort) {
  EXPECT_EQ(ToString(Target{}), "127.0.0.1:2005");
  EXPECT_EQ(ToString(Target{"::1", "2006"}), "[::1]:2006");
}

}  // namespace
}  // namespace desktop::testing
