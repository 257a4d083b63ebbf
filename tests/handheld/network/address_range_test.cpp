// Who may connect, by address.
#include "handheld/network/address_range.h"

#include <arpa/inet.h>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <netinet/in.h>

namespace ce::host {
namespace {

AnyAddress Ip4(const char* text) {
  ::sockaddr_storage storage{};
  storage.ss_family = AF_INET;
  EXPECT_EQ(::inet_pton(AF_INET, text, &reinterpret_cast<::sockaddr_in&>(storage).sin_addr), 1);
  return AnyAddressOf(storage);
}

AnyAddress Ip6(const char* text) {
  ::sockaddr_storage storage{};
  storage.ss_family = AF_INET6;
  EXPECT_EQ(::inet_pton(AF_INET6, text, &reinterpret_cast<::sockaddr_in6&>(storage).sin6_addr), 1);
  return AnyAddressOf(storage);
}

AddressRange Range(const char* text) {
  std::string error;
  const auto range = AddressRange::Parse(text, &error);
  EXPECT_TRUE(range) << error;
  return range.value_or(AddressRange());
}

TEST(AddressRange, HoldsASingleAddress) {
  const AddressRange range = Range("192.168.1.7");
  EXPECT_TRUE(range.Contains(Ip4("192.168.1.7")));
  EXPECT_FALSE(range.Contains(Ip4("192.168.1.6")));
  EXPECT_FALSE(range.Contains(Ip6("::1")));
}

TEST(AddressRange, HoldsANetworkToItsEnds) {
  const AddressRange range = Range("10.1.64.0/18");
  EXPECT_TRUE(range.Contains(Ip4("10.1.64.0")));
  EXPECT_TRUE(range.Contains(Ip4("10.1.127.255")));
  EXPECT_FALSE(range.Contains(Ip4("10.1.63.255")));
  EXPECT_FALSE(range.Contains(Ip4("10.1.128.0")));
}

TEST(AddressRange, HoldsEveryAddressOfItsKindWithoutBits) {
  EXPECT_TRUE(Range("0.0.0.0/0").Contains(Ip4("203.0.113.9")));
  EXPECT_FALSE(Range("0.0.0.0/0").Contains(Ip6("2001:db8::1")));
  EXPECT_TRUE(Range("::/0").Contains(Ip6("2001:db8::1")));
}

TEST(AddressRange, KnowsAnIp4AddressInTheFormThatIp6HasForIt) {
  EXPECT_TRUE(Range("192.168.1.0/24").Contains(Ip6("::ffff:192.168.1.9")));
  EXPECT_FALSE(Range("192.168.1.0/24").Contains(Ip6("::ffff:192.168.2.9")));
}

TEST(AddressRange, HoldsAnIp6Network) {
  EXPECT_TRUE(Range("fd00:1::/33").Contains(Ip6("fd00:1:7fff::9")));
  EXPECT_FALSE(Range("fd00:1::/33").Contains(Ip6("fd00:1:8000::9")));
}

TEST(AddressRange, TellsTheLoopbackFromOthers) {
  for (const AnyAddress& own : {Ip4("127.0.0.1"), Ip4("127.9.9.9"), Ip6("::1")})
    EXPECT_TRUE(IsLoopback(own)) << TextOf(own);
  for (const AnyAddress& other : {Ip4("0.0.0.0"), Ip4("128.0.0.1"), Ip6("::"), Ip6("::2")})
    EXPECT_FALSE(IsLoopback(other)) << TextOf(other);
}

TEST(AddressRange, IsShownAsItIsWritten) {
  EXPECT_EQ(TextOf(Ip4("192.168.1.7")), "192.168.1.7");
  EXPECT_EQ(TextOf(Ip6("::ffff:192.168.1.7")), "192.168.1.7");
  EXPECT_EQ(TextOf(Ip6("fd00::7")), "fd00::7");
}

struct NoRange {
  const char* text;
  const char* says;
};

class WrongRange : public ::testing::TestWithParam<NoRange> {};

TEST_P(WrongRange, IsRefusedWithTheReason) {
  std::string error;
  EXPECT_FALSE(AddressRange::Parse(GetParam().text, &error)) << GetParam().text;
  EXPECT_THAT(error, ::testing::HasSubstr(GetParam().says));
}

INSTANTIATE_TEST_SUITE_P(
    Texts, WrongRange,
    ::testing::Values(NoRange{"", "is no address"}, NoRange{"desk", "is no address"},
                      NoRange{"10.0.0", "is no address"}, NoRange{"10.0.0.0/", "from 0 to 32"},
                      NoRange{"10.0.0.0/33", "from 0 to 32"},
                      NoRange{"10.0.0.0/8x", "from 0 to 32"}, NoRange{"::/129", "from 0 to 128"},
                      NoRange{"10.0.0.0/-1", "from 0 to 32"},
                      NoRange{"10.0.0.7/8", "within a network of 8 bits"}));

}  // namespace
}  // namespace ce::host
