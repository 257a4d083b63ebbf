#include <gtest/gtest.h>

#include <cstring>
#include <set>

#include "handheld/base/fault.h"
#include "handheld/network/socket_errors.h"
#include "platform/sockets.h"
#include "platform/status.h"

namespace ce {
namespace {

constexpr DWORD kLoopback = 0x0100007F;

std::set<DWORD> AddressesOf(const hostent* entry) {
  std::set<DWORD> addresses;
  for (char** each = entry->h_addr_list; *each; ++each) {
    DWORD address = 0;
    std::memcpy(&address, *each, sizeof(address));
    addresses.insert(address);
  }
  return addresses;
}

TEST(GetHostName, GivesAName) {
  char name[128] = "";
  EXPECT_EQ(gethostname(name, sizeof(name)), 0);
  EXPECT_GT(std::strlen(name), 0u);
}

TEST(GetHostName, RefusesTooLittleRoom) {
  char name[1] = {'x'};
  EXPECT_EQ(gethostname(name, 1), SOCKET_ERROR);
  EXPECT_EQ(GetLastError(), host::kWsaFault);
  EXPECT_EQ(name[0], 'x');
  EXPECT_EQ(gethostname(nullptr, 128), SOCKET_ERROR);
  EXPECT_EQ(GetLastError(), host::kWsaFault);
}

TEST(GetHostName, FailsOnPurpose) {
  char name[128];
  const auto plan = host::FaultPlan::FailCalls("gethostname", 10050);
  EXPECT_EQ(gethostname(name, sizeof(name)), SOCKET_ERROR);
  EXPECT_EQ(GetLastError(), 10050u);
}

TEST(GetHostByName, ListsTheHostsOwnAddresses) {
  char name[128];
  ASSERT_EQ(gethostname(name, sizeof(name)), 0);
  const hostent* entry = gethostbyname(name);
  ASSERT_NE(entry, nullptr);
  EXPECT_STREQ(entry->h_name, name);
  EXPECT_EQ(entry->h_addrtype, AF_INET);
  EXPECT_EQ(entry->h_length, 4);
  EXPECT_EQ(*entry->h_aliases, nullptr);
  EXPECT_TRUE(AddressesOf(entry).contains(kLoopback));
}

TEST(GetHostByName, LooksOtherNamesUp) {
  const hostent* entry = gethostbyname("127.0.0.9");
  ASSERT_NE(entry, nullptr);
  EXPECT_EQ(AddressesOf(entry), std::set<DWORD>{0x0900007F});
}

TEST(GetHostByName, DoesNotKnowANameThatCannotBe) {
  EXPECT_EQ(gethostbyname("no such name"), nullptr);
  EXPECT_EQ(GetLastError(), host::kWsaHostNotFound);
  EXPECT_EQ(gethostbyname(nullptr), nullptr);
  EXPECT_EQ(GetLastError(), host::kWsaHostNotFound);
}

TEST(GetHostByName, FailsOnPurpose) {
  const auto plan = host::FaultPlan::FailCalls("gethostbyname", 11002);
  EXPECT_EQ(gethostbyname("127.0.0.1"), nullptr);
  EXPECT_EQ(GetLastError(), 11002u);
}

}  // namespace
}  // namespace ce
