#include "handheld/ink/rich_text.h"

#include <gtest/gtest.h>

#include <string>

#include "common/text/code_page.h"

namespace corvane {
namespace {

using ce::host::kMaxRichTextDepth;
using ce::host::ReadRichText;
using ce::host::WriteRichText;

struct Case {
  const char* name;
  std::string body;  // behind "{\rtf1\ansi\ansicpg1252\deff0 " and before "}"
  std::u16string text;
};

class RichTextBody : public ::testing::TestWithParam<Case> {};

TEST_P(RichTextBody, IsRead) {
  EXPECT_EQ(ReadRichText("{\\rtf1\\ansi\\ansicpg1252\\deff0 " + GetParam().body + "}"),
            GetParam().text);
}

const auto kNameOf = [](const auto& test) { return test.param.name; };

INSTANTIATE_TEST_SUITE_P(
    Lines, RichTextBody,
    ::testing::Values(Case{"Nothing", "", u""}, Case{"Text", "plain text", u"plain text"},
                      Case{"Par", "a\\par b", u"a\r\nb"}, Case{"LastPar", "a\\par", u"a"},
                      Case{"LastParAndLineEnd", "a\\par\r\n", u"a"},
                      Case{"OnlyTheLastPar", "a\\par\\par", u"a\r\n"},
                      Case{"LastParInAGroup", "{a\\par}", u"a"},
                      Case{"LoneParIsNoLine", "\\par", u""}, Case{"Line", "a\\line b", u"a\r\nb"},
                      Case{"LastLineIsText", "a\\line", u"a\r\n"},
                      Case{"BackslashAndLineEnd", "a\\\r\nb\\\nc", u"a\r\nb\r\nc"},
                      Case{"LineEndsAreNoText", "a\r\nb\nc\rd", u"abcd"},
                      Case{"Tab", "a\\tab b\\\tc\td", u"a\tb\tc\td"},
                      Case{"Row", "a\\cell b\\cell\\row c", u"a\tb\t\r\nc"},
                      Case{"NestedRow", "a\\nestcell\\nestrow{\\nonesttables\\par}b", u"a\t\r\nb"},
                      Case{"Sect", "a\\sect b", u"a\r\nb"}, Case{"Page", "a\\page b", u"a\r\nb"},
                      Case{"Column", "a\\column b", u"a\r\nb"},
                      Case{"ParIsNotPard", "a\\pard b", u"ab"}),
    kNameOf);

INSTANTIATE_TEST_SUITE_P(
    Characters, RichTextBody,
    ::testing::Values(
        Case{"Escapes", "\\\\\\{\\}", u"\\{}"}, Case{"OneBlankEndsAWord", "\\b  a\\b0  b", u" a b"},
        Case{"AWordNeedsNoBlank", "\\b{a}\\b0.b\\i1c", u"a.bc"},
        Case{"NegativeNumber", "\\li-720 a\\b-b", u"a-b"},
        Case{"HugeNumber", "\\fs99999999999999999999 a", u"a"},
        Case{"Dashes", "\\emdash\\endash x\\emspace\\enspace\\qmspace y",
             u"\u2014\u2013x\u2003\u2002\u2005y"},
        Case{"Quotes", "\\lquote a\\rquote\\ldblquote b\\rdblquote", u"\u2018a\u2019\u201Cb\u201D"},
        Case{"Bullet", "\\bullet", u"\u2022"},
        Case{"Symbols", "a\\~b\\_c\\-d", u"a\u00A0b\u2011c\u00ADd"},
        Case{"Joiners", "\\zwj\\zwnj\\ltrmark\\rtlmark", u"\u200D\u200C\u200E\u200F"},
        Case{"UnknownSymbol", "a\\|b\\:c", u"abc"}, Case{"UnknownWord", "a\\unknown5 b", u"ab"},
        Case{"ZeroBytes", std::string("a\0b", 3), u"ab"}),
    kNameOf);

INSTANTIATE_TEST_SUITE_P(
    Unicode, RichTextBody,
    ::testing::Values(Case{"OneFallback", "\\u8217?s", u"\u2019s"},
                      Case{"HexFallback", "\\u233\\'e9s", u"és"},
                      Case{"Negative", "\\u-4064?a", u"\uF020a"},
                      Case{"AboveSigned", "\\u61472?a", u"\uF020a"},
                      Case{"Pair", "\\u-10179?\\u-8704?", u"\U0001F600"},
                      Case{"NoFallback", "\\uc0\\u8217 s", u"\u2019s"},
                      Case{"TwoFallbacks", "\\uc2\\u20013\\'d6\\'d0x", u"\u4E2Dx"},
                      Case{"CountEndsWithItsGroup", "{\\uc3\\u65???a}\\u66?b", u"AaBb"},
                      Case{"FallbackEndsWithItsGroup", "\\uc5{\\u65?}abcdef", u"Aabcdef"},
                      Case{"FallbackEndsWhereAGroupBegins", "\\uc5\\u65?{bc}", u"Abc"},
                      Case{"AWordIsOneFallback", "\\u8212\\emdash x", u"\u2014x"},
                      Case{"ASymbolIsOneFallback", "\\u160\\~x", u"\u00A0x"},
                      Case{"BinaryIsOneFallback", std::string("\\u65\\bin3 {}\\x", 14), u"Ax"},
                      Case{"WithoutANumber", "\\u a", u"a"},
                      Case{"PairOfForms", "{\\upr{ansi}{\\*\\ud uni\\u8217?}}x", u"uni\u2019x"}),
    kNameOf);

INSTANTIATE_TEST_SUITE_P(
    CodePages, RichTextBody,
    ::testing::Values(
        Case{"Western", "\\'e9\\'80\\'E4", u"é€ä"}, Case{"RawBytes", "\xE9\x80", u"é€"},
        Case{"NotHex", "a\\'g1b", u"ag1b"}, Case{"DocumentsOwn", "\\ansicpg1251 \\'cf\\'f0", u"Пр"},
        Case{"Dos", "\\pc \\'82", u"é"}, Case{"OtherDos", "\\pca \\'d0", u"ð"},
        Case{"UnknownIsWestern", "\\ansicpg12345 \\'e9", u"é"},
        Case{"FontsCharset", "{\\fonttbl{\\f0 A;}{\\f1\\fcharset204 B;}}\\f1\\'cf\\f0\\'cf", u"ПÏ"},
        Case{"TableWithoutGroups", "{\\fonttbl\\f0 A;\\f1\\fcharset161 B;}\\f1\\'e1", u"α"},
        Case{"FontEndsWithItsGroup", "{\\fonttbl{\\f1\\fcharset204 B;}}{\\f1\\'cf}\\'cf", u"ПÏ"},
        Case{"DefaultFont", "\\deff3{\\fonttbl{\\f3\\fcharset238 B;}}\\'e8\\f0\\'e8\\plain\\'e8",
             u"čèč"},
        Case{"FontsCodePage", "{\\fonttbl{\\f1\\fcharset0\\cpg1253 B;}}\\f1\\'e1", u"α"},
        Case{"UnknownCharset", "{\\fonttbl{\\f1\\fcharset99 B;}}\\f1\\'e1", u"á"},
        Case{"Japanese", "{\\fonttbl{\\f1\\fcharset128 B;}}\\f1\\'93\\'fa\\'96\\'7b", u"日本"},
        Case{"TrailByteAsLetter", "{\\fonttbl{\\f1\\fcharset128 B;}}\\f1\\'83J", u"カ"},
        Case{"BytesOfOneCharacterOnTwoLines", "{\\fonttbl{\\f1\\fcharset128 B;}}\\f1\\'93\r\n\\'fa",
             u"日"},
        Case{"HalfACharacter", "{\\fonttbl{\\f1\\fcharset128 B;}}\\f1\\'93\\u65?", u"\uFFFDA"},
        Case{"CharsetOutsideTheTable", "{\\f1\\fcharset204}\\f1\\'cf", u"Ï"}),
    kNameOf);

INSTANTIATE_TEST_SUITE_P(
    Destinations, RichTextBody,
    ::testing::Values(
        Case{"Tables", "{\\fonttbl{\\f0 Arial;}}{\\colortbl;\\red0;}{\\stylesheet{\\s0 Normal;}}a",
             u"a"},
        Case{"Information", "{\\info{\\title T}{\\author A}}a", u"a"},
        Case{"Picture", "a{\\pict\\wmetafile8 0102ff{\\par}}b", u"ab"},
        Case{"PictureOfRawBytes", std::string("a{\\pict\\bin4 }}{\0}b", 19), u"ab"},
        Case{"RawBytesInText", "a\\bin2 }{b", u"ab"},
        Case{"NoRawBytes", "a\\bin0 b\\bin-5 c", u"abc"},
        Case{"Object", "a{\\object{\\*\\objdata 01}{\\result{old\\par}}}b", u"ab"},
        Case{"Ignorable", "a{\\*\\unknown text{deeper}}b", u"ab"},
        Case{"IgnorableThatIsKnown", "a{\\*\\par text}b", u"ab"},
        Case{"IgnorableWithRawBytes", "a{\\*\\x\\bin3 }}}}b", u"ab"},
        Case{"StarWithoutAWord", "a{\\* b}c", u"a bc"},
        Case{"UnknownIsText", "a{\\unknown text}b", u"atextb"},
        Case{"Field", "{\\field{\\*\\fldinst HYPERLINK \"x\"}{\\fldrslt here}}", u"here"},
        Case{"HeadersAndFooters", "{\\header h}{\\footerr f\\par}{\\footnote n}a", u"a"},
        Case{"BulletsText", "{\\pntext\\f1\\'b7\\tab}{\\*\\pn\\pnlvlblt}a", u"a"},
        Case{"SkippedStaysSkipped", "{\\info{\\fonttbl a}\\upr{\\*\\ud b}c}d", u"d"}),
    kNameOf);

TEST(ReadRichText, RefusesWhatIsNoDocument) {
  for (const char* bytes : {"text", "{text}", "{\\pwi}", "\\rtf1", " {\\rtf1}", "{\\rt"}) {
    EXPECT_EQ(ReadRichText(bytes), std::nullopt) << bytes;
  }
}

TEST(ReadRichText, RefusesADocumentThatDoesNotEnd) {
  const std::string document = "{\\rtf1 a{\\b b}\\u65?\\'e9{\\pict\\bin2 xx}\\par}";
  for (std::size_t size = 0; size < document.size(); ++size) {
    EXPECT_EQ(ReadRichText(document.substr(0, size)), std::nullopt) << size;
  }
  EXPECT_EQ(ReadRichText(document), u"abAé");
}

TEST(ReadRichText, EndsWithItsGroup) {
  EXPECT_EQ(ReadRichText("{\\rtf1 a}b{"), u"a");
  EXPECT_EQ(ReadRichText(std::string("{\\rtf1 a}\0\0", 11)), u"a");
}

TEST(ReadRichText, RefusesRawBytesThatAreNotThere) {
  EXPECT_EQ(ReadRichText("{\\rtf1\\bin9 }"), std::nullopt);
  EXPECT_EQ(ReadRichText("{\\rtf1\\bin2147483647 }"), std::nullopt);
}

TEST(ReadRichText, BoundsTheDepth) {
  const auto nested = [](std::size_t depth) {
    return "{\\rtf1" + std::string(depth - 1, '{') + "a" + std::string(depth, '}');
  };
  EXPECT_EQ(ReadRichText(nested(kMaxRichTextDepth)), u"a");
  EXPECT_EQ(ReadRichText(nested(kMaxRichTextDepth + 1)), std::nullopt);
  EXPECT_EQ(ReadRichText(nested(1000000)), std::nullopt);
}

TEST(ReadRichText, OpensNoConversionTwiceHoweverOftenTheCodePageChanges) {
  std::string document = "{\\rtf1{\\fonttbl{\\f1\\fcharset204;}{\\f2\\fcharset161;}{\\f3\\cpg4;}}";
  std::u16string text;
  for (int i = 0; i < 1000; ++i) {
    document += "\\f1\\'e6\\f2\\'e6\\f3\\'e6";
    text += u"\u0436\u03B6\u00E6";  // the page 4 is unknown, so its byte is western
  }
  const std::uint64_t before = text::ConversionsOpened();
  EXPECT_EQ(ReadRichText(document + '}'), text);
  EXPECT_LE(text::ConversionsOpened() - before, 3u);
}

TEST(WriteRichText, IsADocumentInAscii) {
  EXPECT_EQ(WriteRichText(u"a{b}\\\tc\r\né\u2019\uF020\U0001F600"),
            "{\\rtf1\\ansi\\ansicpg1252\\deff0{\\fonttbl{\\f0\\fnil\\fcharset0 Tahoma;}}\r\n"
            "\\uc1\\pard\\plain\\f0\\fs20 a\\{b\\}\\\\\\tab c\\par\r\n"
            "\\u233?\\u8217?\\u-4064?\\u-10179?\\u-8704?\\par\r\n"
            "}\r\n");
}

TEST(WriteRichText, IsReadAgainUnitByUnit) {
  std::u16string all;
  for (char32_t unit = 0; unit <= 0xFFFF; ++unit) {
    if (unit != u'\r' && unit != u'\n') all.push_back(static_cast<char16_t>(unit));
  }
  EXPECT_EQ(ReadRichText(WriteRichText(all).value()), all);
}

TEST(WriteRichText, KeepsTheLines) {
  for (const std::u16string text : {u"", u"a", u"a\r\n", u"\r\n", u" a \r\n\r\n b ", u"\r\na"}) {
    EXPECT_EQ(ReadRichText(WriteRichText(text).value()), text);
  }
}

TEST(WriteRichText, MakesALoneLineFeedALine) {
  EXPECT_EQ(ReadRichText(WriteRichText(u"a\nb\rc").value()), u"a\r\nb\r\nc");
  EXPECT_EQ(ReadRichText(WriteRichText(u"a\n").value()), u"a\r\n");
}

}  // namespace
}  // namespace corvane
