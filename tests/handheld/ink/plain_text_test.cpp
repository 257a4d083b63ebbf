// The two plain texts, and the numbers that formats go by.
#include <gtest/gtest.h>

#include "handheld/ink/note_formats.h"
#include "tests/support/test_handheld.h"

namespace corvane {
namespace {

using namespace ce::host;
using PlainText = testing::HandheldTest;

TEST_F(PlainText, IsInTheHandheldsCodePage) {
  EXPECT_EQ(ReadPlainText("caf\xE9 \x80"), u"café €");
  EXPECT_EQ(WritePlainText(u"café €"), "caf\xE9 \x80");
  handheld_.SetLanguage(0x0419);
  EXPECT_EQ(ReadPlainText("\xCF\xF0"), u"Пр");
  EXPECT_EQ(WritePlainText(u"Пр"), "\xCF\xF0");
  handheld_.SetLanguage(0x0411);
  EXPECT_EQ(ReadPlainText("\x93\xFA\x96\x7B"), u"日本");
  EXPECT_EQ(WritePlainText(u"日本"), "\x93\xFA\x96\x7B");
}

TEST_F(PlainText, WritesAQuestionMarkForWhatThePageLacks) {
  EXPECT_EQ(WritePlainText(u"\u4E2D\U0001F600x"), "??x");
}

TEST_F(PlainText, KeepsEveryByteOfTheWesternPage) {
  std::string all;
  for (int byte = 0; byte < 256; ++byte) all.push_back(static_cast<char>(byte));
  EXPECT_EQ(WritePlainText(ReadPlainText(all).value()), all);
}

TEST(UnicodeText, IsLittleEndianWithoutAMark) {
  EXPECT_EQ(ReadUnicodeText(std::string("a\0\x2D\x4E", 4)), u"a\u4E2D");
  EXPECT_EQ(WriteUnicodeText(u"a\u4E2D"), std::string("a\0\x2D\x4E", 4));
}

TEST(UnicodeText, ReadsOverAByteOrderMark) {
  EXPECT_EQ(ReadUnicodeText(std::string("\xFF\xFE"
                                        "a\0",
                                        4)),
            u"a");
  EXPECT_EQ(ReadUnicodeText("\xFF\xFE"), u"");
  EXPECT_EQ(ReadUnicodeText(std::string("a\0\xFF\xFE", 4)), u"a\uFEFF");
}

TEST(UnicodeText, RefusesHalfAUnit) {
  EXPECT_EQ(ReadUnicodeText("abc"), std::nullopt);
}

TEST(NoteFormats, GoByTheirNumbers) {
  for (const ce::DWORD number : {1u, 2u, 17u, 67586u}) {
    ASSERT_NE(FindNoteFormat(number), nullptr) << number;
    EXPECT_EQ(FindNoteFormat(number)->number, number);
  }
  for (const ce::DWORD number : {0u, 3u, 16u, 18u, 67585u, 0x8001u, 0xFFFFFFFFu}) {
    EXPECT_EQ(FindNoteFormat(number), nullptr) << number;
  }
}

}  // namespace
}  // namespace corvane
