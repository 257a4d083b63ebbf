#include "handheld/dom/utf8_writer.h"

#include "handheld/dom/utf.h"
#include "tests/handheld/dom/dom_support.h"

namespace ce::testing {
namespace {

using host::dom::AppendUtf8;
using host::dom::Escape;
using host::dom::Utf8Writer;
using std::string_view_literals::operator""sv;

std::string Without(std::u16string_view text, char16_t first, char16_t second) {
  BufferStream stream;
  Utf8Writer writer(&stream);
  writer.TextWithout(text, first, second);
  EXPECT_EQ(writer.Finish(), S_OK);
  return stream.content();
}

TEST(Utf8Writer, KeepsTwoCharactersApart) {
  EXPECT_EQ(Without(u"a?>b?"
                    u"?>>c?",
                    u'?', u'>'),
            "a? >b?? >>c?");
  EXPECT_EQ(Without(u"?\x01>?\xDC00>?\xFFFF>", u'?', u'>'), "? >? >? >");
}

TEST(Utf8Writer, KeepsACharacterFromItselfAndTheEnd) {
  EXPECT_EQ(Without(u"a-b--c---", u'-', u'-'), "a-b- -c- - - ");
  EXPECT_EQ(Without(u"a-\x02-b-\x01", u'-', u'-'), "a- -b- ");
  EXPECT_EQ(Without(u"", u'-', u'-'), "");
}

TEST(Utf8Writer, PairsMayLieAcrossPieces) {
  // The text is written in runs; a pair begins in one and ends in the next.
  for (std::size_t before = 1020; before < 1030; ++before) {
    BufferStream stream;
    Utf8Writer writer(&stream);
    writer.Text(std::u16string(before, u'x') + u"\U0001F600y", Escape::kText);
    EXPECT_EQ(writer.Finish(), S_OK);
    EXPECT_EQ(stream.content(), std::string(before, 'x') + "\xF0\x9F\x98\x80y");
  }
}

TEST(Utf8Writer, WritesNothingForNothing) {
  BufferStream stream;
  Utf8Writer writer(&stream);
  EXPECT_EQ(writer.Finish(), S_OK);
  EXPECT_EQ(stream.writes(), 0);
}

TEST(AppendUtf8, GivesBackWhatTheWriterWrote) {
  std::u16string all;
  for (char32_t code = 1; code < 0x110000; ++code) {
    if (code >= 0x10000) {
      all += static_cast<char16_t>(0xD7C0 + (code >> 10));
      all += static_cast<char16_t>(0xDC00 + (code & 0x3FF));
    } else if (host::dom::IsXmlUnit(static_cast<char16_t>(code))) {
      all += static_cast<char16_t>(code);
    }
  }
  BufferStream stream;
  Utf8Writer writer(&stream);
  writer.Text(all, Escape::kNone);
  ASSERT_EQ(writer.Finish(), S_OK);
  std::u16string back = u"before ";
  ASSERT_TRUE(AppendUtf8(stream.content(), back));
  EXPECT_TRUE(back == u"before " + all);
}

TEST(AppendUtf8, RefusesWhatIsNotStrict) {
  for (const auto bytes :
       {"\x80"sv, "\xC0\x80"sv, "\xC1\xBF"sv, "\xC2"sv, "\xC2\x41"sv, "\xE0\x9F\xBF"sv,
        "\xE2\x82"sv, "\xED\xA0\x80"sv, "\xED\xBF\xBF"sv, "\xF0\x8F\xBF\xBF"sv,
        "\xF4\x90\x80\x80"sv, "\xF5\x80\x80\x80"sv, "\xFF"sv}) {
    std::u16string text;
    EXPECT_FALSE(AppendUtf8(bytes, text)) << ::testing::PrintToString(bytes);
  }
}

}  // namespace
}  // namespace ce::testing
