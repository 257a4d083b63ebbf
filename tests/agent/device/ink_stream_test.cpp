#include "agent/device/ink_stream.h"

#include <gtest/gtest.h>

#include <string>

namespace corvane {
namespace {

ce::DWORD_PTR Cookie(auto& state) {
  return reinterpret_cast<ce::DWORD_PTR>(&state);
}

TEST(ReadNote, GivesWhatIsAskedForUntilNothingIsLeft) {
  const ce::BYTE data[] = {'a', 'b', 'c', 'd', 'e'};
  ReadState state{data, 0, 5};
  std::string seen;
  for (const ce::LONG expected : {2, 2, 1, 0, 0}) {
    ce::BYTE buffer[2];
    ce::LONG moved = -1;
    EXPECT_EQ(ReadNote(Cookie(state), buffer, 2, &moved), 0u);
    ASSERT_EQ(moved, expected);
    seen.append(buffer, buffer + moved);
  }
  EXPECT_EQ(seen, "abcde");
}

TEST(ReadNote, GivesNothingOfNothing) {
  ReadState state;
  ce::BYTE buffer[2];
  ce::LONG moved = -1;
  EXPECT_EQ(ReadNote(Cookie(state), buffer, 2, &moved), 0u);
  EXPECT_EQ(moved, 0);
}

TEST(WriteNote, OnlyCountsWithoutABuffer) {
  WriteState state;
  ce::BYTE data[] = {'a', 'b', 'c'};
  for (int i = 1; i <= 3; ++i) {
    ce::LONG moved = -1;
    EXPECT_EQ(WriteNote(Cookie(state), data, 3, &moved), 0u);
    EXPECT_EQ(moved, 3);
    EXPECT_EQ(state.position, 3u * static_cast<unsigned>(i));
  }
}

TEST(WriteNote, CutsWhatGoesBeyondTheCapacity) {
  ce::BYTE room[6] = {0, 0, 0, 0, 0, '!'};
  WriteState state{room, 0, 5};
  ce::BYTE data[] = {'a', 'b', 'c'};
  for (const ce::LONG expected : {3, 2, 0}) {
    ce::LONG moved = -1;
    EXPECT_EQ(WriteNote(Cookie(state), data, 3, &moved), 0u);
    EXPECT_EQ(moved, expected);
  }
  EXPECT_EQ(std::string(room, room + 6), "abcab!");
}

TEST(StreamOver, NamesTheStateAndTheCallback) {
  ReadState state;
  const ce::EDITSTREAM stream = StreamOver(state, ReadNote);
  EXPECT_EQ(stream.dwCookie, Cookie(state));
  EXPECT_EQ(stream.dwError, 0u);
  EXPECT_EQ(stream.pfnCallback, ReadNote);
}

}  // namespace
}  // namespace corvane
