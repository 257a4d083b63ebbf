#include "agent/log/format.h"

#include <gtest/gtest.h>

#include <array>
#include <cstdio>
#include <limits>
#include <optional>
#include <string>
#include <vector>

#include "platform/com_ptr.h"

namespace corvane {
namespace {

template <std::size_t kSize = 1024, typename... Arguments>
std::optional<std::string> Narrow(const char* format, const Arguments&... arguments) {
  std::array<char, kSize> out;
  const std::array<FormatArgument, sizeof...(Arguments)> list{FormatArgument(arguments)...};
  const int length = FormatText(out, format, list);
  if (length == kDoesNotFit) return std::nullopt;
  return std::string(out.data(), static_cast<std::size_t>(length));
}

template <std::size_t kSize = 1024, typename... Arguments>
std::optional<std::u16string> Wide(const char16_t* format, const Arguments&... arguments) {
  std::array<char16_t, kSize> out;
  const std::array<FormatArgument, sizeof...(Arguments)> list{FormatArgument(arguments)...};
  const int length = FormatText(out, format, list);
  if (length == kDoesNotFit) return std::nullopt;
  return std::u16string(out.data(), static_cast<std::size_t>(length));
}

TEST(FormatText, AgreesWithTheCLibraryOnNumbers) {
  const std::vector<const char*> formats = {"%d",   "%i",   "%u",    "%x",    "%X",   "%08X",
                                            "%02u", "%04u", "%5d|",  "%-5d|", "%05d", "%-05d|",
                                            "%03u", "%1d",  "%12d|", "%012d"};
  const std::vector<int> values = {0,
                                   1,
                                   -1,
                                   9,
                                   10,
                                   -10,
                                   12345,
                                   -12345,
                                   0xAB,
                                   99999,
                                   123456,
                                   std::numeric_limits<int>::max(),
                                   std::numeric_limits<int>::min()};
  for (const char* format : formats) {
    for (const int value : values) {
      char expected[64];
      // NOLINTNEXTLINE: the formats are those above
      std::snprintf(expected, sizeof(expected), format, value);
      EXPECT_EQ(Narrow(format, value), expected) << format << ' ' << value;
    }
  }
}

TEST(FormatText, TakesSizesThatChangeNothing) {
  EXPECT_EQ(Narrow("%ld %lX %08lX %lu %hd", -1, -1, 0xABCu, 7, 8), "-1 FFFFFFFF 00000ABC 7 8");
}

TEST(FormatText, TakesIntegersAs32BitsAsTheDeviceDoes) {
  EXPECT_EQ(Narrow("%d", 0xFFFFFFFFu), "-1");
  EXPECT_EQ(Narrow("%u", -1), "4294967295");
  EXPECT_EQ(Narrow("%d", std::int64_t{0x100000002}), "2");
  EXPECT_EQ(Narrow("%X", std::int16_t{-1}), "FFFFFFFF");
}

TEST(FormatText, TakesAllOfALongInteger) {
  EXPECT_EQ(Narrow("%I64d", std::numeric_limits<std::int64_t>::min()), "-9223372036854775808");
  EXPECT_EQ(Narrow("%I64d", std::numeric_limits<std::int64_t>::max()), "9223372036854775807");
  EXPECT_EQ(Narrow("%I64u", std::numeric_limits<std::uint64_t>::max()), "18446744073709551615");
  EXPECT_EQ(Narrow("%I64X", std::uint64_t{0xFEDCBA9876543210}), "FEDCBA9876543210");
  EXPECT_EQ(Narrow("%I64d", 0xFFFFFFFFu), "4294967295");
}

TEST(FormatText, PrintsTextsOfBothWidthsInBoth) {
  EXPECT_EQ(Wide(u"%s and %s", u"wide", "narrow"), u"wide and narrow");
  EXPECT_EQ(Narrow("%s and %s", u"wide", "narrow"), "wide and narrow");
  EXPECT_EQ(Wide(u"%s", u"Žofia 漢"), u"Žofia 漢");
  EXPECT_EQ(Wide(u"%s", "\xE9"), u"\u00E9");
  EXPECT_EQ(Narrow("%s", u"a\u00E9\u6F22z"), "a??z");
}

TEST(FormatText, PrintsViewsStringsAndOwners) {
  const ce::Bstr owner(u"owned");
  const std::u16string text = u"string";
  EXPECT_EQ(Wide(u"%s %s %s", std::u16string_view(u"view"), std::u16string_view(text), owner),
            u"view string owned");
  EXPECT_EQ(Wide(u"%s", owner.get()), u"owned");
}

TEST(FormatText, EndsATextAtItsFirstZero) {
  EXPECT_EQ(Wide(u"<%s>", std::u16string_view(u"ab\0cd", 5)), u"<ab>");
}

TEST(FormatText, PrintsANullTextAsTheCLibraryDoes) {
  const char16_t* wide = nullptr;
  const char* narrow = nullptr;
  const ce::Bstr owner;
  EXPECT_EQ(Wide(u"%s %s %s %s", wide, narrow, owner, nullptr), u"(null) (null) (null) (null)");
}

TEST(FormatText, PadsTexts) {
  EXPECT_EQ(Wide(u"%5s|%-5s|%2s", u"ab", u"ab", u"abc"), u"   ab|ab   |abc");
}

TEST(FormatText, PrintsCharactersPercentsAndAddresses) {
  EXPECT_EQ(Wide(u"%c%c 100%%", u'ž', 'a'), u"ža 100%");
  const void* object = reinterpret_cast<void*>(std::uintptr_t{0xABC0});
  EXPECT_EQ(Wide(u"0x%08X", object), u"0x0000ABC0");
}

TEST(FormatText, PrintsEnumerationsAndTruths) {
  enum class Kind : std::uint8_t { kLast = 200 };
  EXPECT_EQ(Wide(u"%d %d", Kind::kLast, true), u"200 1");
}

TEST(FormatText, NeverTrustsADirective) {
  EXPECT_EQ(Wide(u"%s"), u"(null)");
  EXPECT_EQ(Wide(u"%d"), u"(null)");
  EXPECT_EQ(Wide(u"%d", u"text"), u"text");
  EXPECT_EQ(Wide(u"%s", 42), u"42");
  EXPECT_EQ(Wide(u"%"), u"%");
  EXPECT_EQ(Wide(u"50% of %q %-"), u"50% of %q %-");
  EXPECT_EQ(Wide(u"%漢"), u"%漢");
}

TEST(FormatText, TakesWhatFitsExactlyAndNoMore) {
  EXPECT_EQ((Narrow<4>("%s", "abcd")), "abcd");
  EXPECT_EQ((Narrow<4>("%s", "abcde")), std::nullopt);
  EXPECT_EQ((Narrow<4>("abcde")), std::nullopt);
  EXPECT_EQ((Narrow<4>("%d", -1234)), std::nullopt);
  EXPECT_EQ((Wide<1024>(u"%s", std::u16string_view(std::u16string(1024, u'x'))))->size(), 1024u);
  EXPECT_EQ((Wide<1024>(u"%s", std::u16string_view(std::u16string(1025, u'x')))), std::nullopt);
}

TEST(FormatText, AHugeWidthDoesNotFitAndCostsNothing) {
  EXPECT_EQ(Wide(u"%99999999999999999999999d", 1), std::nullopt);
  EXPECT_EQ(Wide(u"%-99999999999999999999999s", u"x"), std::nullopt);
  EXPECT_EQ(Wide(u"%0999999999999999999d", 1), std::nullopt);
}

}  // namespace
}  // namespace corvane
