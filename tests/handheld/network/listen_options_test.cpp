#include "handheld/network/listen_options.h"

#include <gtest/gtest.h>

namespace ce::host {
namespace {

struct Reading {
  bool read;
  std::string address = "127.0.0.1";
  std::uint16_t port = 2005;
  std::string error{};
};

Reading Read(std::string_view text) {
  Reading reading{false};
  reading.read = ParseListenAddress(text, &reading.address, &reading.port, &reading.error);
  return reading;
}

struct Accepted {
  const char* text;
  const char* address;
  std::uint16_t port;
};
class ParseListenAddressAccepts : public ::testing::TestWithParam<Accepted> {};

TEST_P(ParseListenAddressAccepts, Text) {
  const Reading reading = Read(GetParam().text);
  EXPECT_TRUE(reading.read) << reading.error;
  EXPECT_EQ(reading.address, GetParam().address);
  EXPECT_EQ(reading.port, GetParam().port);
  EXPECT_EQ(reading.error, "");
}
INSTANTIATE_TEST_SUITE_P(Forms, ParseListenAddressAccepts,
                         ::testing::Values(Accepted{"0.0.0.0", "0.0.0.0", 2005},
                                           Accepted{"192.168.1.7:80", "192.168.1.7", 80},
                                           Accepted{":4000", "127.0.0.1", 4000},
                                           Accepted{"127.0.0.1:0", "127.0.0.1", 0},
                                           Accepted{":65535", "127.0.0.1", 65535},
                                           Accepted{"localhost", "127.0.0.1", 2005},
                                           Accepted{"localhost:0", "127.0.0.1", 0}));

struct Refused {
  const char* text;
  const char* error;
};
class ParseListenAddressRefuses : public ::testing::TestWithParam<Refused> {};

TEST_P(ParseListenAddressRefuses, Text) {
  const Reading reading = Read(GetParam().text);
  EXPECT_FALSE(reading.read);
  EXPECT_EQ(reading.error, GetParam().error);
  EXPECT_EQ(reading.address, "127.0.0.1");
  EXPECT_EQ(reading.port, 2005);
}
INSTANTIATE_TEST_SUITE_P(
    Forms, ParseListenAddressRefuses,
    ::testing::Values(
        Refused{"", "\"\" is not an IPv4 address, nor the name of a host that has one"},
        Refused{"no..host",
                "\"no..host\" is not an IPv4 address, nor the name of a host that has one"},
        Refused{"2005", "\"2005\" is not an IPv4 address, nor the name of a host that has one"},
        Refused{"1.2.3", "\"1.2.3\" is not an IPv4 address, nor the name of a host that has one"},
        Refused{"1.2.3.256:1",
                "\"1.2.3.256\" is not an IPv4 address, nor the name of a host that has one"},
        Refused{" 1.2.3.4",
                "\" 1.2.3.4\" is not an IPv4 address, nor the name of a host that has one"},
        Refused{"1.2.3.4:5:6",
                "\"1.2.3.4:5\" is not an IPv4 address, nor the name of a host that has one"},
        Refused{"::1", "\"::1\" is an IPv6 address; the agent listens on IPv4 only"},
        Refused{"[::1]", "\"[::1]\" is an IPv6 address; the agent listens on IPv4 only"},
        Refused{"[::1]:2005", "\"[::1]:2005\" is an IPv6 address; the agent listens on IPv4 only"},
        Refused{":", "\"\" is not a port number (0 to 65535)"},
        Refused{"1.2.3.4:", "\"\" is not a port number (0 to 65535)"},
        Refused{"1.2.3.4:65536", "\"65536\" is not a port number (0 to 65535)"},
        Refused{"1.2.3.4:-1", "\"-1\" is not a port number (0 to 65535)"},
        Refused{"1.2.3.4:80x", "\"80x\" is not a port number (0 to 65535)"}));

}  // namespace
}  // namespace ce::host
