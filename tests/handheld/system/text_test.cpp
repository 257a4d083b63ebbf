#include "platform/text.h"

#include <gtest/gtest.h>

#include <string>
#include <string_view>

#include "handheld/base/fault.h"
#include "handheld/system/language.h"
#include "platform/status.h"
#include "tests/support/test_handheld.h"

namespace corvane {
namespace {

using namespace ce;

constexpr DWORD kErrorOnInvalid = 8;

std::string Encode(UINT codePage, std::u16string_view text, BOOL* substituted = nullptr) {
  const INT length = static_cast<INT>(text.size());
  const INT needed =
      WideCharToMultiByte(codePage, 0, text.data(), length, nullptr, 0, nullptr, nullptr);
  std::string bytes(static_cast<std::size_t>(needed), '#');
  EXPECT_EQ(WideCharToMultiByte(codePage, 0, text.data(), length, bytes.data(), needed, nullptr,
                                substituted),
            needed);
  return bytes;
}

std::u16string Decode(UINT codePage, std::string_view bytes) {
  const INT length = static_cast<INT>(bytes.size());
  const INT needed = MultiByteToWideChar(codePage, 0, bytes.data(), length, nullptr, 0);
  std::u16string text(static_cast<std::size_t>(needed), u'#');
  EXPECT_EQ(MultiByteToWideChar(codePage, 0, bytes.data(), length, text.data(), needed), needed);
  return text;
}

class TextCall : public testing::HandheldTest {};
using WideCharToMultiByteCall = TextCall;
using MultiByteToWideCharCall = TextCall;

struct PageCase {
  const char* name;
  LANGID language;
  std::u16string text;
  std::string bytes;
};

class SystemPage : public testing::HandheldTest, public ::testing::WithParamInterface<PageCase> {};

TEST_P(SystemPage, FollowsTheLanguage) {
  handheld_.SetLanguage(GetParam().language);
  EXPECT_EQ(Encode(CP_ACP, GetParam().text), GetParam().bytes);
  EXPECT_EQ(Decode(CP_ACP, GetParam().bytes), GetParam().text);
}

INSTANTIATE_TEST_SUITE_P(
    Languages, SystemPage,
    ::testing::Values(PageCase{"English", 0x0409, u"caf\u00E9 \u20AC \u2019", "caf\xE9 \x80 \x92"},
                      PageCase{"German", 0x0407, u"Gr\u00FC\u00DFe",
                               "Gr\xFC\xDF"
                               "e"},
                      PageCase{"Polish", 0x0415, u"\u0142\u00F3d\u017A",
                               "\xB3\xF3"
                               "d\x9F"},
                      PageCase{"Russian", 0x0419, u"\u0414\u0430", "\xC4\xE0"},
                      PageCase{"Greek", 0x0408, u"\u03B1\u03B2", "\xE1\xE2"},
                      PageCase{"Turkish", 0x041F, u"\u015F\u0131", "\xFE\xFD"},
                      PageCase{"Hebrew", 0x040D, u"\u05D0", "\xE0"},
                      PageCase{"Arabic", 0x0401, u"\u0627", "\xC7"},
                      PageCase{"Lithuanian", 0x0427, u"\u0117", "\xEB"},
                      PageCase{"Thai", 0x041E, u"\u0E01", "\xA1"},
                      PageCase{"Vietnamese", 0x042A, u"\u01A1", "\xF5"},
                      PageCase{"Japanese", 0x0411, u"a\u65E5\u672C\uFF71", "a\x93\xFA\x96{\xB1"},
                      PageCase{"Korean", 0x0412, u"\uD55C", "\xC7\xD1"},
                      PageCase{"Chinese", 0x0804, u"\u4E2D", "\xD6\xD0"},
                      PageCase{"Taiwan", 0x0404, u"\u4E2D", "\xA4\xA4"},
                      PageCase{"Hindi", 0x0439, u"\u0905", "\xE0\xA4\x85"},
                      PageCase{"SwissItalian", 0x0810, u"\u00E8", "\xE8"},
                      PageCase{"UnknownRegion", 0x7C19, u"\u0414", "\xC4"},
                      PageCase{"UnknownLanguage", 0x03FF, u"\u00E9", "\xE9"}),
    [](const auto& test) { return test.param.name; });

TEST_F(WideCharToMultiByteCall, CountsTheTerminatorOfAZeroTerminatedText) {
  char out[8] = "#######";
  EXPECT_EQ(WideCharToMultiByte(CP_ACP, 0, u"log", -1, nullptr, 0, nullptr, nullptr), 4);
  EXPECT_EQ(WideCharToMultiByte(CP_ACP, 0, u"log", -1, out, 8, nullptr, nullptr), 4);
  EXPECT_EQ(std::string_view(out, 5), std::string_view("log\0#", 5));
}

TEST_F(WideCharToMultiByteCall, PutsAQuestionMarkForWhatThePageLacks) {
  BOOL substituted = FALSE;
  EXPECT_EQ(Encode(CP_ACP, u"\u4E2D a \U0001F600!", &substituted), "? a ?!");
  EXPECT_TRUE(substituted);
  EXPECT_EQ(Encode(CP_ACP, u"plain", &substituted), "plain");
  EXPECT_FALSE(substituted);
  handheld_.SetLanguage(0x0411);
  EXPECT_EQ(Encode(CP_ACP, u"\u00C4 \U0001F600 \xD800 \u65E5", &substituted), "? ? ? \x93\xFA");
  EXPECT_TRUE(substituted);
}

TEST_F(WideCharToMultiByteCall, PutsTheCallersCharacterInstead) {
  char out[2] = {};
  EXPECT_EQ(WideCharToMultiByte(1252, 0, u"\u4E2D", 1, out, 2, "_", nullptr), 1);
  EXPECT_EQ(out[0], '_');
}

TEST_F(WideCharToMultiByteCall, WritesUtf8) {
  BOOL substituted = FALSE;
  EXPECT_EQ(Encode(CP_UTF8, u"a\u00E9\u20AC\U0001F600", &substituted),
            "a\xC3\xA9\xE2\x82\xAC\xF0\x9F\x98\x80");
  EXPECT_FALSE(substituted);
  EXPECT_EQ(Encode(CP_UTF8, u"\xDC00 \xD800", &substituted), "\xEF\xBF\xBD \xEF\xBF\xBD");
  EXPECT_TRUE(substituted);
}

TEST_F(WideCharToMultiByteCall, ConvertsLongTexts) {
  handheld_.SetLanguage(0x0411);
  std::u16string text;
  std::string bytes;
  for (int i = 0; i < 3000; ++i) {
    text += u"\u65E5x";
    bytes += "\x93\xFAx";
  }
  EXPECT_EQ(Encode(CP_ACP, text), bytes);
  EXPECT_EQ(Decode(CP_ACP, bytes), text);
}

TEST_F(WideCharToMultiByteCall, RefusesAShortBuffer) {
  char out[2] = {'#', '#'};
  EXPECT_EQ(WideCharToMultiByte(CP_ACP, 0, u"log", 3, out, 2, nullptr, nullptr), 0);
  EXPECT_EQ(GetLastError(), ERROR_INSUFFICIENT_BUFFER);
  EXPECT_EQ(out[0], '#');
}

TEST_F(WideCharToMultiByteCall, RefusesImpossibleArguments) {
  char out[4];
  EXPECT_EQ(WideCharToMultiByte(CP_ACP, 0, nullptr, 3, out, 4, nullptr, nullptr), 0);
  EXPECT_EQ(GetLastError(), ERROR_INVALID_PARAMETER);
  EXPECT_EQ(WideCharToMultiByte(CP_ACP, 0, u"a", 0, out, 4, nullptr, nullptr), 0);
  EXPECT_EQ(WideCharToMultiByte(CP_ACP, 0, u"a", -2, out, 4, nullptr, nullptr), 0);
  EXPECT_EQ(WideCharToMultiByte(CP_ACP, 0, u"a", 1, out, -1, nullptr, nullptr), 0);
  EXPECT_EQ(WideCharToMultiByte(CP_ACP, 0, u"a", 1, nullptr, 4, nullptr, nullptr), 0);
  SetLastError(0);
  EXPECT_EQ(WideCharToMultiByte(12345, 0, u"a", 1, out, 4, nullptr, nullptr), 0);
  EXPECT_EQ(GetLastError(), ERROR_INVALID_PARAMETER) << "no such page";
}

TEST_F(MultiByteToWideCharCall, CountsTheTerminatorOfAZeroTerminatedText) {
  WCHAR out[8];
  EXPECT_EQ(MultiByteToWideChar(CP_ACP, 0, "log", -1, out, 8), 4);
  EXPECT_EQ(std::u16string_view(out, 4), std::u16string_view(u"log\0", 4));
}

TEST_F(MultiByteToWideCharCall, PutsTheReplacementForWhatIsIllFormed) {
  EXPECT_EQ(Decode(CP_UTF8, "a\x80z"), u"a\uFFFDz");
  EXPECT_EQ(Decode(CP_UTF8, "\xC0\xAF"), u"\uFFFD\uFFFD") << "overlong";
  EXPECT_EQ(Decode(CP_UTF8, "\xED\xA0\x80"), u"\uFFFD\uFFFD\uFFFD") << "a surrogate";
  EXPECT_EQ(Decode(CP_UTF8, "\xE2\x82"), u"\uFFFD\uFFFD") << "cut";
  EXPECT_EQ(Decode(CP_UTF8, "\xF4\x90\x80\x80"), u"\uFFFD\uFFFD\uFFFD\uFFFD") << "beyond the last";
  handheld_.SetLanguage(0x0411);
  EXPECT_EQ(Decode(CP_ACP, "a\x93"), u"a\uFFFD");
  handheld_.SetLanguage(0x040D);
  EXPECT_EQ(Decode(CP_ACP, "\xE0\xFF\xE1"), u"\u05D0\uFFFD\u05D1");
}

TEST_F(MultiByteToWideCharCall, RefusesWhatIsIllFormedWhenAskedTo) {
  WCHAR out[8];
  EXPECT_EQ(MultiByteToWideChar(CP_UTF8, kErrorOnInvalid, "a\x80", 2, out, 8), 0);
  EXPECT_EQ(GetLastError(), ERROR_NO_UNICODE_TRANSLATION);
  EXPECT_EQ(MultiByteToWideChar(CP_UTF8, kErrorOnInvalid, "ab", 2, out, 8), 2);
}

TEST_F(MultiByteToWideCharCall, TakesEveryByteOfTheWesternPage) {
  std::string bytes;
  for (int byte = 0; byte < 256; ++byte) bytes.push_back(static_cast<char>(byte));
  EXPECT_EQ(Encode(1252, Decode(1252, bytes)), bytes);
}

TEST_F(MultiByteToWideCharCall, RefusesAShortBufferAndImpossibleArguments) {
  WCHAR out[2];
  EXPECT_EQ(MultiByteToWideChar(CP_ACP, 0, "log", 3, out, 2), 0);
  EXPECT_EQ(GetLastError(), ERROR_INSUFFICIENT_BUFFER);
  EXPECT_EQ(MultiByteToWideChar(CP_ACP, 0, nullptr, 3, out, 2), 0);
  EXPECT_EQ(GetLastError(), ERROR_INVALID_PARAMETER);
  EXPECT_EQ(MultiByteToWideChar(12345, 0, "a", 1, out, 2), 0);
  EXPECT_EQ(GetLastError(), ERROR_INVALID_PARAMETER);
}

TEST_F(TextCall, HandsOnItsFaults) {
  char bytes[4];
  WCHAR text[4];
  {
    const auto plan = host::FaultPlan::FailCalls("WideCharToMultiByte", ERROR_NOT_ENOUGH_MEMORY);
    EXPECT_EQ(WideCharToMultiByte(CP_ACP, 0, u"a", 1, bytes, 4, nullptr, nullptr), 0);
    EXPECT_EQ(GetLastError(), ERROR_NOT_ENOUGH_MEMORY);
  }
  const auto plan = host::FaultPlan::FailCalls("MultiByteToWideChar", ERROR_NOT_ENOUGH_MEMORY);
  EXPECT_EQ(MultiByteToWideChar(CP_ACP, 0, "a", 1, text, 4), 0);
  EXPECT_EQ(GetLastError(), ERROR_NOT_ENOUGH_MEMORY);
}

TEST(TextCallWithoutAHandheld, IsWestern) {
  EXPECT_EQ(Encode(CP_ACP, u"\u20AC"), "\x80");
}

TEST(LanguageTable, HasAPageThatTheSystemKnowsForEachLanguage) {
  for (const host::Language& language : host::Languages()) {
    if (language.codePage == 0) continue;
    EXPECT_EQ(Encode(language.codePage, u"plain ASCII"), "plain ASCII") << language.tag;
  }
}

}  // namespace
}  // namespace corvane
