#include "common/text/text.h"

#include <gtest/gtest.h>

#include "common/text/transfer_encoding.h"

namespace formats {
namespace {

using namespace std::string_literals;

TEST(EqualsNoCase, ComparesAsciiLettersOnly) {
  EXPECT_TRUE(EqualsNoCase("Tel", "tEL"));
  EXPECT_FALSE(EqualsNoCase("Tel", "Te"));
  EXPECT_FALSE(EqualsNoCase("\xC3\x84", "\xC3\xA4"));
}

struct Utf8Case {
  const char* name;
  std::string bytes;
  std::string repaired;  // equal to `bytes` where they are well-formed
};
class Utf8Test : public ::testing::TestWithParam<Utf8Case> {};

TEST_P(Utf8Test, IsJudgedAndRepaired) {
  const Utf8Case& c = GetParam();
  EXPECT_EQ(IsValidUtf8(c.bytes), c.bytes == c.repaired);
  EXPECT_EQ(RepairUtf8(c.bytes), c.repaired);
}

INSTANTIATE_TEST_SUITE_P(
    IsValidUtf8, Utf8Test,
    ::testing::Values(Utf8Case{"Ascii", "abc", "abc"}, Utf8Case{"Nul", "a\0b"s, "a\0b"s},
                      Utf8Case{"Two", "\xC3\x91", "\xC3\x91"},
                      Utf8Case{"Three", "\xEF\xBF\xBD", "\xEF\xBF\xBD"},
                      Utf8Case{"Four", "\xF0\x9F\x98\x80", "\xF0\x9F\x98\x80"},
                      Utf8Case{"LastCodePoint", "\xF4\x8F\xBF\xBF", "\xF4\x8F\xBF\xBF"},
                      Utf8Case{"CutOff", "a\xC3", "a\uFFFD"},
                      Utf8Case{"StrayTail", "\x80z", "\uFFFDz"},
                      Utf8Case{"Overlong", "\xC0\x80", "\uFFFD\uFFFD"},
                      Utf8Case{"Surrogate", "\xED\xA0\x80", "\uFFFD\uFFFD\uFFFD"},
                      Utf8Case{"BeyondTheLast", "\xF4\x90\x80\x80", "\uFFFD\uFFFD\uFFFD\uFFFD"}),
    [](const auto& test) { return std::string(test.param.name); });

struct CharsetCase {
  const char* name;
  const char* charset;
  std::string bytes;
  std::string text;
};
class CharsetTest : public ::testing::TestWithParam<CharsetCase> {};

TEST_P(CharsetTest, IsConverted) {
  const auto converted = ConvertToUtf8(GetParam().bytes, GetParam().charset);
  ASSERT_TRUE(converted.has_value());
  EXPECT_EQ(converted->text, GetParam().text);
  EXPECT_FALSE(converted->damaged);
}

INSTANTIATE_TEST_SUITE_P(
    ConvertToUtf8, CharsetTest,
    ::testing::Values(
        CharsetCase{"Utf8", "utf-8", "\xC3\xA9", "é"}, CharsetCase{"Utf8Bare", "UTF8", "é", "é"},
        CharsetCase{"Latin1", "ISO-8859-1", "\xE9", "é"},
        CharsetCase{"Latin1MeansWindows1252", "iso-8859-1", "\x80", "€"},
        CharsetCase{"Windows1252", "Windows-1252", "\x93hi\x94", "“hi”"},
        CharsetCase{"Ascii", "us-ascii", "abc", "abc"},
        CharsetCase{"Latin2", "ISO-8859-2", "\xB3", "ł"},
        CharsetCase{"Cyrillic", "windows-1251", "\xCF\xF0", "Пр"},
        CharsetCase{"Koi8", "KOI8-R", "\xF0", "П"},
        CharsetCase{"ShiftJis", "Shift_JIS", "\x8E\x52\x93\x63", "山田"},
        CharsetCase{"EucJp", "EUC-JP", "\xBB\xB3", "山"},
        CharsetCase{"Iso2022Jp", "ISO-2022-JP", "\x1B$B;3\x1B(B", "山"},
        CharsetCase{"Gbk", "GBK", "\xC0\xEE", "李"}, CharsetCase{"Big5", "Big5", "\xA7\xF5", "李"},
        CharsetCase{"EucKr", "EUC-KR", "\xB1\xE8", "김"},
        CharsetCase{"Utf16", "UTF-16LE", "A\0\x34\xD8\x1E\xDD"s, "A\xF0\x9D\x84\x9E"}),
    [](const auto& test) { return std::string(test.param.name); });

TEST(ConvertToUtf8, KnowsNoOtherNames) {
  EXPECT_FALSE(ConvertToUtf8("a", "x-my-own").has_value());
  EXPECT_FALSE(ConvertToUtf8("a", "UTF-8//IGNORE").has_value());
  EXPECT_FALSE(ConvertToUtf8("a", "../../lib/module").has_value());
  EXPECT_FALSE(ConvertToUtf8("a", "").has_value());
  EXPECT_FALSE(ConvertToUtf8("a", std::string(100000, 'x')).has_value());
}

TEST(ConvertToUtf8, ReplacesWhatTheSetDoesNotHold) {
  const auto shiftJis = ConvertToUtf8("a\xFF\x62", "Shift_JIS");
  ASSERT_TRUE(shiftJis.has_value());
  EXPECT_EQ(shiftJis->text, "a\uFFFDb");
  EXPECT_TRUE(shiftJis->damaged);
  const auto cutOff = ConvertToUtf8("a\x8E", "Shift_JIS");
  ASSERT_TRUE(cutOff.has_value());
  EXPECT_EQ(cutOff->text, "a\uFFFD");
  EXPECT_TRUE(cutOff->damaged);
}

TEST(ConvertToUtf8, TakesTextLongerThanItsBuffer) {
  const auto converted = ConvertToUtf8(std::string(100001, '\xB3'), "ISO-8859-2");
  ASSERT_TRUE(converted.has_value());
  EXPECT_EQ(converted->text.size(), 200002u);
}

TEST(DecodeFile, FollowsTheByteOrderMark) {
  EXPECT_EQ(DecodeFile("\xEF\xBB\xBFz").text, "z");
  EXPECT_EQ(DecodeFile("\xFF\xFEz\0"s).text, "z");
  EXPECT_EQ(DecodeFile("\xFE\xFF\0z"s).text, "z");
  EXPECT_EQ(DecodeFile("z\xE9").text, "z\xE9");
  EXPECT_EQ(DecodeFile("").text, "");
}

TEST(DecodeFile, SaysWhenUtf16IsBroken) {
  const Conversion odd = DecodeFile("\xFF\xFEz\0q"s);
  EXPECT_EQ(odd.text, "z\uFFFD");
  EXPECT_TRUE(odd.damaged);
  const Conversion loneSurrogate = DecodeFile("\xFF\xFE\x00\xDCz\0"s);
  EXPECT_EQ(loneSurrogate.text, "\uFFFDz");
  EXPECT_TRUE(loneSurrogate.damaged);
}

TEST(Excerpt, IsShortAndOnOneLine) {
  EXPECT_EQ(Excerpt("a\r\nb\x1B\x7F"), "a  b  ");
  EXPECT_EQ(Excerpt(std::string(60, 'x')), std::string(60, 'x'));
  EXPECT_EQ(Excerpt(std::string(61, 'x')), std::string(60, 'x') + "…");
  EXPECT_EQ(Excerpt(std::string(58, 'x') + "éé"), std::string(58, 'x') + "é…");
  EXPECT_EQ(Excerpt(std::string(59, 'x') + "é"), std::string(59, 'x') + "…");
}

TEST(NormalizeLineBreaks, MakesThemLineFeeds) {
  EXPECT_EQ(NormalizeLineBreaks("a\r\nb\rc\nd\r\r\n"), "a\nb\nc\nd\n\n");
}

TEST(DecodeQuotedPrintable, LeavesBrokenSequencesAsTheyAre) {
  EXPECT_EQ(DecodeQuotedPrintable("=41=4a=4Z=5", false), "AJ=4Z=5");
  EXPECT_EQ(DecodeQuotedPrintable("a=", false), "a");
}

TEST(DecodeQuotedPrintable, TellsAWrittenSemicolonFromASeparator) {
  EXPECT_EQ(DecodeQuotedPrintable("a=3Bb;c", true), "a\\;b;c");
  EXPECT_EQ(DecodeQuotedPrintable("a=5C=3Bb;c", true), "a\\;b;c");
  EXPECT_EQ(DecodeQuotedPrintable("a=3Bb", false), "a;b");
}

TEST(DecodeBase64, SkipsWhatDoesNotBelong) {
  EXPECT_EQ(DecodeBase64("TWFu"), "Man");
  EXPECT_EQ(DecodeBase64(" T W\tF u\r\nTWE="), "ManMa");
  EXPECT_EQ(DecodeBase64("TQ==TWFu"), "M");
  EXPECT_EQ(DecodeBase64(""), "");
}

}  // namespace
}  // namespace formats
