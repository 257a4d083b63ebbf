#include "handheld/network/socket_table.h"

#include <gtest/gtest.h>
#include <sys/socket.h>

#include <set>

namespace ce::host {
namespace {

SocketPtr NewSocket() {
  return std::make_shared<Socket>(UniqueFd(::socket(PF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0)),
                                  SocketState::kNew);
}

TEST(SocketTable, FindsWhatWasAdded) {
  SocketTable table;
  const SocketPtr first = NewSocket();
  const SocketPtr second = NewSocket();
  const SOCKET firstHandle = table.Add(first);
  const SOCKET secondHandle = table.Add(second);
  EXPECT_EQ(table.Find(firstHandle), first);
  EXPECT_EQ(table.Find(secondHandle), second);
}

TEST(SocketTable, GivesNoSpecialValue) {
  SocketTable table;
  for (int i = 0; i < 100; ++i) {
    const SOCKET handle = table.Add(NewSocket());
    EXPECT_NE(handle, SOCKET{0});
    EXPECT_NE(handle, INVALID_SOCKET);
    EXPECT_EQ(handle & 1, SOCKET{1}) << "could be the address of an object";
  }
}

TEST(SocketTable, AClosedValueFindsNothingThoughItsPlaceIsUsedAgain) {
  SocketTable table;
  std::set<SOCKET> closed;
  for (int i = 0; i < 100; ++i) {
    const SOCKET handle = table.Add(NewSocket());
    for (const SOCKET old : closed) EXPECT_EQ(table.Find(old), nullptr);
    EXPECT_TRUE(closed.insert(handle).second) << "handed out twice";
    table.Remove(handle);
  }
}

TEST(SocketTable, RemovesOnce) {
  SocketTable table;
  const SocketPtr socket = NewSocket();
  const SOCKET handle = table.Add(socket);
  EXPECT_EQ(table.Remove(handle), socket);
  EXPECT_EQ(table.Remove(handle), nullptr);
}

TEST(SocketTable, KnowsNoForeignValue) {
  SocketTable table;
  const SOCKET handle = table.Add(NewSocket());
  for (const SOCKET foreign :
       {SOCKET{0}, SOCKET{1}, handle + 1, handle + 2, handle - 1, INVALID_SOCKET, handle << 1}) {
    EXPECT_EQ(table.Find(foreign), nullptr) << foreign;
    EXPECT_EQ(table.Remove(foreign), nullptr) << foreign;
  }
}

TEST(SocketTable, ReplacesWhatAnOpenValueStandsFor) {
  SocketTable table;
  const SOCKET handle = table.Add(NewSocket());
  const SocketPtr other = NewSocket();
  table.Replace(handle, other);
  EXPECT_EQ(table.Find(handle), other);
  table.Remove(handle);
  table.Replace(handle, NewSocket());
  EXPECT_EQ(table.Find(handle), nullptr);
}

}  // namespace
}  // namespace ce::host
