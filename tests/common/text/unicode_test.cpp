#include "common/text/unicode.h"

#include <gtest/gtest.h>

#include <string>

namespace text {
namespace {

using namespace std::string_literals;

TEST(Utf8, BringsEveryCharacterBack) {
  std::u16string all;
  for (char32_t c = 0; c < 0x10000; ++c) {
    if (!IsLeadSurrogate(c) && !IsTrailSurrogate(c)) all += static_cast<char16_t>(c);
  }
  for (char16_t lead = 0xD800; lead < 0xDC00; ++lead) {
    for (char16_t trail = 0xDC00; trail < 0xE000; ++trail) all += {lead, trail};
  }
  const auto bytes = ToUtf8(all);
  ASSERT_TRUE(bytes);
  EXPECT_EQ(bytes->size(), 0x80u + 2 * 0x780u + 3 * 0xF000u + 4 * 0x100000u);
  EXPECT_TRUE(IsValidUtf8(*bytes));
  EXPECT_EQ(RepairUtf8(*bytes), *bytes);
  EXPECT_EQ(FromUtf8(*bytes), all);
  EXPECT_EQ(FromWtf8(*bytes), all);
  std::string stored;
  AppendWtf8(stored, all);
  EXPECT_EQ(stored, *bytes);
}

TEST(Utf8, IsJudgedAndRepaired) {
  struct Case {
    std::string bytes;
    std::string repaired;  // equal to `bytes` where they are well-formed
  };
  const Case cases[] = {
      {"abc", "abc"},
      {"a\0b"s, "a\0b"s},
      {"\xC3\x91", "\xC3\x91"},
      {"\xEF\xBF\xBD", "\xEF\xBF\xBD"},
      {"\xF0\x9F\x98\x80", "\xF0\x9F\x98\x80"},
      {"\xF4\x8F\xBF\xBF", "\xF4\x8F\xBF\xBF"},
      {"a\xC3", "a\uFFFD"},  // cut off
      {"\xE2\x82", "\uFFFD\uFFFD"},
      {"\x80z", "\uFFFDz"},  // a tail alone
      {"\xC2\x41", "\uFFFDA"},
      {"\xC3(", "\uFFFD("},
      {"\xC0\x80", "\uFFFD\uFFFD"},  // longer than need be
      {"\xC1\xBF", "\uFFFD\uFFFD"},
      {"\xE0\x9F\xBF", "\uFFFD\uFFFD\uFFFD"},
      {"\xF0\x8F\xBF\xBF", "\uFFFD\uFFFD\uFFFD\uFFFD"},
      {"\xED\xA0\x80", "\uFFFD\uFFFD\uFFFD"},  // surrogates
      {"\xED\xBF\xBF", "\uFFFD\uFFFD\uFFFD"},
      {"\xF4\x90\x80\x80", "\uFFFD\uFFFD\uFFFD\uFFFD"},  // beyond the last character
      {"\xF5\x80\x80\x80", "\uFFFD\uFFFD\uFFFD\uFFFD"},
      {"\xFF", "\uFFFD"},
  };
  for (const Case& c : cases) {
    SCOPED_TRACE(testing::PrintToString(c.bytes));
    const bool valid = c.bytes == c.repaired;
    EXPECT_EQ(IsValidUtf8(c.bytes), valid);
    EXPECT_EQ(RepairUtf8(c.bytes), c.repaired);
    EXPECT_EQ(FromUtf8(c.bytes).has_value(), valid);
    EXPECT_EQ(FromUtf8Lossy(c.bytes), FromUtf8(c.repaired));
  }
}

TEST(AppendFromUtf8, KeepsWhatIsThere) {
  std::u16string out = u"a";
  EXPECT_TRUE(AppendFromUtf8(out, "\xC3\xA9"));
  EXPECT_FALSE(AppendFromUtf8(out, "b\xC3"));
  EXPECT_EQ(out, u"a\u00E9b\uFFFD");
}

TEST(ToUtf8, RefusesHalfASurrogatePair) {
  for (const std::u16string& text :
       {std::u16string(u"\xD800"), std::u16string(u"a\xDC00"), std::u16string(u"\xDC00\xD800")}) {
    EXPECT_FALSE(ToUtf8(text));
  }
  EXPECT_EQ(ToUtf8Lossy(u"a\xD800z"), "a\xEF\xBF\xBDz");
}

TEST(Wtf8, CarriesHalvesOfPairs) {
  const std::u16string text = u"a\xDC00\xD800z\xD83D\xDE00\xD800";
  std::string bytes = "before ";
  AppendWtf8(bytes, text);
  EXPECT_EQ(bytes, "before a\xED\xB0\x80\xED\xA0\x80z\xF0\x9F\x98\x80\xED\xA0\x80");
  EXPECT_TRUE(IsWtf8(bytes));
  EXPECT_EQ(Utf16Length(bytes), 7 + text.size());
  EXPECT_EQ(FromWtf8(bytes), u"before " + text);
}

TEST(Wtf8, ReplacesWhatIsNeitherCharacterNorHalf) {
  EXPECT_FALSE(IsWtf8("a\xFF\xC3z"));
  EXPECT_EQ(Utf16Length("a\xFF\xC3z"), 4u);
  EXPECT_EQ(FromWtf8("a\xFF\xC3z"), u"a\uFFFD\uFFFDz");
}

TEST(Utf16Le, GoesBothWays) {
  const std::string bytes = "a\0\xAC\x20\x3D\xD8\x00\xDE"s;
  EXPECT_EQ(ToUtf16Le(u"a\u20AC\U0001F600"), bytes);
  EXPECT_EQ(FromUtf16Le(bytes), u"a\u20AC\U0001F600");
  EXPECT_EQ(FromUtf16Le("a\0b"s), u"a");
  EXPECT_EQ(ToUtf8Lossy(FromUtf16Le("\x3D\xD8z\0"s)), "\uFFFDz");
}

TEST(Fold, ComparesNamesAsTheDeviceDoes) {
  EXPECT_EQ(Fold(u"CorvaneLog.txt"), Fold(u"CORVANELOG.TXT"));
  EXPECT_EQ(Fold(u"\u00E4\u00F6\u0439\u03C9"), Fold(u"\u00C4\u00D6\u0419\u03A9"));
  EXPECT_NE(Fold(u"\u0131"), Fold(u"I")) << "a letter whose upper case is another's";
  EXPECT_NE(Fold(u"\u00DF"), Fold(u"SS"));
  EXPECT_EQ(Fold(u"\xD800").size(), 1u);
}

}  // namespace
}  // namespace text
