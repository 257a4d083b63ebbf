#include "handheld/dom/utf8_writer.h"

#include "common/text/unicode.h"
#include "common/text/xml_text.h"
#include "tests/handheld/dom/dom_support.h"

namespace ce::testing {
namespace {

using host::dom::Escape;
using host::dom::Utf8Writer;

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

TEST(Utf8Writer, WritesEveryCharacterOfXml) {
  std::u16string all;
  for (char32_t code = 1; code < 0x110000; ++code) {
    if (code >= 0x10000) {
      all += static_cast<char16_t>(0xD7C0 + (code >> 10));
      all += static_cast<char16_t>(0xDC00 + (code & 0x3FF));
    } else if (text::IsXmlUnit(static_cast<char16_t>(code))) {
      all += static_cast<char16_t>(code);
    }
  }
  BufferStream stream;
  Utf8Writer writer(&stream);
  writer.Text(all, Escape::kNone);
  ASSERT_EQ(writer.Finish(), S_OK);
  EXPECT_TRUE(text::FromUtf8(stream.content()) == all);
}

}  // namespace
}  // namespace ce::testing
