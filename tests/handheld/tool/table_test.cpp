#include "handheld/tool/table.h"

#include <gtest/gtest.h>

namespace tool::testing {
namespace {

TEST(Column, PadsToItsWidth) {
  EXPECT_EQ(Column("ab", 4), "ab  ");
  EXPECT_EQ(Column("", 2), "  ");
}

TEST(Column, LeavesWhatJustFitsWhole) {
  EXPECT_EQ(Column("abcd", 4), "abcd");
  EXPECT_EQ(Column("abcd  ", 4), "abcd") << "blanks behind it say nothing";
}

TEST(Column, CutsWhatIsLongerWithAnEllipsis) {
  EXPECT_EQ(Column("abcde", 4), "abc…");
}

TEST(Column, CountsCharactersNotBytes) {
  EXPECT_EQ(Column("äöü", 4), "äöü ");
  EXPECT_EQ(Column("äöüß", 4), "äöüß");
  EXPECT_EQ(Column("äöüßé", 4), "äöü…");
}

TEST(Column, CountsCellsNotCharacters) {
  EXPECT_EQ(Column("山田", 6), "山田  ");
  EXPECT_EQ(Column("山田太郎", 6), "山田… ");
  EXPECT_EQ(Column("e\u0301e\u0301", 4), "e\u0301e\u0301  ");
}

TEST(Column, StaysOnOneLine) {
  EXPECT_EQ(Column("a\nb\rc", 6), "a b c ");
}

TEST(Column, TellsTheTerminalNothing) {
  EXPECT_EQ(Column("a\x1B[2Jb\x7F\tc", 10), "a [2Jb  c ");
}

TEST(Counted, SaysOneAndMany) {
  EXPECT_EQ(Counted(0, "task"), "0 tasks");
  EXPECT_EQ(Counted(1, "task"), "1 task");
  EXPECT_EQ(Counted(2, "task"), "2 tasks");
}

}  // namespace
}  // namespace tool::testing
