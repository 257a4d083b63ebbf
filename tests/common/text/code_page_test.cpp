#include "common/text/code_page.h"

#include <gtest/gtest.h>

namespace text {
namespace {

using namespace std::string_literals;

TEST(ConvertToUtf8, KnowsTheSetsOfAddressBooks) {
  struct Case {
    const char* charset;
    std::string bytes;
    std::string text;
  };
  const Case cases[] = {
      {"utf-8", "\xC3\xA9", "é"},
      {"UTF8", "é", "é"},
      {"ISO-8859-1", "\xE9", "é"},
      {"iso-8859-1", "\x80", "€"},  // what says Latin-1 is Windows-1252
      {"Windows-1252", "\x93hi\x94", "“hi”"},
      {"us-ascii", "abc", "abc"},
      {"ISO-8859-2", "\xB3", "ł"},
      {"windows-1251", "\xCF\xF0", "Пр"},
      {"windows-1258", "a\xEC ta", "á ta"},  // an accent behind its letter, and none
      {"KOI8-R", "\xF0", "П"},
      {"Shift_JIS", "\x8E\x52\x93\x63", "山田"},
      {"EUC-JP", "\xBB\xB3", "山"},
      {"ISO-2022-JP", "\x1B$B;3\x1B(B", "山"},
      {"GBK", "\xC0\xEE", "李"},
      {"Big5", "\xA7\xF5", "李"},
      {"EUC-KR", "\xB1\xE8", "김"},
      {"UTF-16LE", "A\0\x34\xD8\x1E\xDD"s, "A\xF0\x9D\x84\x9E"},
      {"UTF-16", "\xFE\xFF\0A"s, "A"},
      {"UTF-16", "\xFF\xFE\x41\0"s, "A"},  // once more, and the other way round
  };
  for (const Case& c : cases) {
    SCOPED_TRACE(c.charset);
    const auto converted = ConvertToUtf8(c.bytes, c.charset);
    ASSERT_TRUE(converted.has_value());
    EXPECT_EQ(converted->text, c.text);
    EXPECT_FALSE(converted->damaged);
  }
}

TEST(ConvertToUtf8, KnowsNoOtherNames) {
  EXPECT_FALSE(text::ConvertToUtf8("a", "x-my-own").has_value());
  EXPECT_FALSE(text::ConvertToUtf8("a", "UTF-8//IGNORE").has_value());
  EXPECT_FALSE(text::ConvertToUtf8("a", "../../lib/module").has_value());
  EXPECT_FALSE(text::ConvertToUtf8("a", "").has_value());
  EXPECT_FALSE(text::ConvertToUtf8("a", std::string(100000, 'x')).has_value());
}

TEST(ConvertToUtf8, ReplacesWhatTheSetDoesNotHold) {
  const auto shiftJis = text::ConvertToUtf8("a\xFF\x62", "Shift_JIS");
  ASSERT_TRUE(shiftJis.has_value());
  EXPECT_EQ(shiftJis->text, "a\uFFFDb");
  EXPECT_TRUE(shiftJis->damaged);
  const auto shifted = ConvertToUtf8("\x1B$B\xAC;3\x1B(Ba", "ISO-2022-JP");
  ASSERT_TRUE(shifted.has_value());
  EXPECT_EQ(shifted->text, "\uFFFD山a");
  const auto cutOff = text::ConvertToUtf8("a\x8E", "Shift_JIS");
  ASSERT_TRUE(cutOff.has_value());
  EXPECT_EQ(cutOff->text, "a\uFFFD");
  EXPECT_TRUE(cutOff->damaged);
}

TEST(ConvertToUtf8, TakesTextLongerThanItsBuffer) {
  const auto converted = text::ConvertToUtf8(std::string(100001, '\xB3'), "ISO-8859-2");
  ASSERT_TRUE(converted.has_value());
  EXPECT_EQ(converted->text.size(), 200002u);
}

TEST(DecodeFile, FollowsTheByteOrderMark) {
  EXPECT_EQ(text::DecodeFile("\xEF\xBB\xBFz").text, "z");
  EXPECT_EQ(text::DecodeFile("\xFF\xFEz\0"s).text, "z");
  EXPECT_EQ(text::DecodeFile("\xFE\xFF\0z"s).text, "z");
  EXPECT_EQ(text::DecodeFile("z\xE9").text, "z\xE9");
  EXPECT_EQ(text::DecodeFile("").text, "");
}

TEST(DecodeFile, SaysWhenUtf16IsBroken) {
  const Conversion odd = text::DecodeFile("\xFF\xFEz\0q"s);
  EXPECT_EQ(odd.text, "z\uFFFD");
  EXPECT_TRUE(odd.damaged);
  const Conversion loneSurrogate = text::DecodeFile("\xFF\xFE\x00\xDCz\0"s);
  EXPECT_EQ(loneSurrogate.text, "\uFFFDz");
  EXPECT_TRUE(loneSurrogate.damaged);
}

}  // namespace
}  // namespace text
