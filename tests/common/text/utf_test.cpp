#include "common/text/utf.h"

#include <gtest/gtest.h>

#include <string>

namespace corvane {
namespace {

using ce::host::Fold;
using ce::host::FromUtf8;
using ce::host::FromUtf8Lossy;
using ce::host::ToUtf8;
using ce::host::ToUtf8Lossy;

TEST(ToUtf8, BringsEveryCharacterBack) {
  for (char32_t c = 0; c <= 0x10FFFF; c += c < 0x3000 ? 1 : 0x101) {
    if (c >= 0xD800 && c < 0xE000) continue;
    std::u16string text;
    if (c < 0x10000) {
      text.push_back(static_cast<char16_t>(c));
    } else {
      text.push_back(static_cast<char16_t>(0xD800 + ((c - 0x10000) >> 10)));
      text.push_back(static_cast<char16_t>(0xDC00 + (c & 0x3FF)));
    }
    const auto bytes = ToUtf8(text);
    ASSERT_TRUE(bytes) << static_cast<unsigned>(c);
    ASSERT_EQ(FromUtf8(*bytes), text) << static_cast<unsigned>(c);
  }
}

TEST(ToUtf8, RefusesHalfASurrogatePair) {
  for (const std::u16string& text :
       {std::u16string(u"\xD800"), std::u16string(u"a\xDC00"), std::u16string(u"\xDC00\xD800")}) {
    EXPECT_FALSE(ToUtf8(text));
  }
  EXPECT_EQ(ToUtf8Lossy(u"a\xD800z"), "a\xEF\xBF\xBDz");
}

TEST(FromUtf8, RefusesIllFormedBytes) {
  for (const char* bytes : {"\x80", "\xC1\x81", "\xE0\x80\x80", "\xED\xB0\x80", "\xF0\x80\x80\x80",
                            "\xF5\x80\x80\x80", "\xE2\x82", "\xC3("}) {
    EXPECT_FALSE(FromUtf8(bytes));
  }
  EXPECT_EQ(FromUtf8Lossy("\xC3("), u"\uFFFD(");
}

TEST(Fold, ComparesNamesAsTheDeviceDoes) {
  EXPECT_EQ(Fold(u"CorvaneLog.txt"), Fold(u"CORVANELOG.TXT"));
  EXPECT_EQ(Fold(u"\u00E4\u00F6\u0439\u03C9"), Fold(u"\u00C4\u00D6\u0419\u03A9"));
  EXPECT_NE(Fold(u"\u0131"), Fold(u"I")) << "a letter whose upper case is another's";
  EXPECT_NE(Fold(u"\u00DF"), Fold(u"SS"));
  EXPECT_EQ(Fold(u"\xD800").size(), 1u);
}

}  // namespace
}  // namespace corvane
