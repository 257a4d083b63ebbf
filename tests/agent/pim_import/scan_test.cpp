#include "agent/pim_import/scan.h"

#include <gtest/gtest.h>
#include <rapidcheck/gtest.h>

#include <array>
#include <cwchar>
#include <string>

namespace corvane::testing {
namespace {

using namespace ce;

constexpr ScanField kDate[] = {{0, 4}, {0, 2}, {0, 2}};
constexpr ScanField kDateTime[] = {{0, 4}, {0, 2}, {0, 2}, {u'T', 2}, {0, 2}, {0, 2}};

struct Scan {
  int read = 0;
  std::array<LONG, 6> numbers{};
  friend bool operator==(const Scan&, const Scan&) = default;
};

std::ostream& operator<<(std::ostream& out, const Scan& scan) {
  out << scan.read << ":";
  for (const LONG number : scan.numbers) out << " " << number;
  return out;
}

Scan Ours(std::u16string_view text, std::span<const ScanField> fields) {
  Scan scan;
  scan.read = ScanNumbers(text, fields, scan.numbers);
  return scan;
}

// What the C library reads.
Scan Reference(const std::u16string& text, const wchar_t* pattern) {
  const std::wstring wide(text.begin(), text.end());
  Scan scan;
  auto& n = scan.numbers;
  scan.read = std::swscanf(wide.c_str(), pattern, &n[0], &n[1], &n[2], &n[3], &n[4], &n[5]);
  return scan;
}

Scan ReferenceDate(const std::u16string& text) {
  return Reference(text, L"%04d%02d%02d");
}
Scan ReferenceDateTime(const std::u16string& text) {
  return Reference(text, L"%04d%02d%02dT%02d%02d%02d");
}

TEST(ScanNumbers, ReadsADateAndIgnoresWhatFollows) {
  EXPECT_EQ(Ours(u"20080215", kDate), (Scan{3, {2008, 2, 15}}));
  EXPECT_EQ(Ours(u"20080215T000000", kDate), (Scan{3, {2008, 2, 15}}));
  EXPECT_EQ(Ours(u"200802159", kDate), (Scan{3, {2008, 2, 15}}));
}

TEST(ScanNumbers, CountsASignTowardsTheWidth) {
  EXPECT_EQ(Ours(u"2008-02-15", kDate), (Scan{3, {2008, 0, 2}}));
  EXPECT_EQ(Ours(u"-123+4-5", kDate), (Scan{3, {-123, 4, -5}}));
}

TEST(ScanNumbers, SkipsBlanksBeforeANumber) {
  EXPECT_EQ(Ours(u" 2008 02\t15", kDate), (Scan{3, {2008, 2, 15}}));
}

TEST(ScanNumbers, StopsAtWhatIsNoNumber) {
  EXPECT_EQ(Ours(u"2008x215", kDate), (Scan{1, {2008}}));
  EXPECT_EQ(Ours(u"2008--15", kDate), (Scan{1, {2008}}));
  EXPECT_EQ(Ours(u"x", kDate), (Scan{0, {}}));
  EXPECT_EQ(Ours(u"200802", kDate), (Scan{2, {2008, 2}}));
}

TEST(ScanNumbers, TellsTheEndOfTheText) {
  EXPECT_EQ(Ours(u"", kDate).read, kScanEndOfText);
  EXPECT_EQ(Ours(u" \t\r\n", kDate).read, kScanEndOfText);
  EXPECT_EQ(Ours(std::u16string_view(u"\0"
                                     u"2008",
                                     5),
                 kDate)
                .read,
            kScanEndOfText);
}

TEST(ScanNumbers, WantsTheLiteralAtOnce) {
  EXPECT_EQ(Ours(u"20080215T103045", kDateTime), (Scan{6, {2008, 2, 15, 10, 30, 45}}));
  EXPECT_EQ(Ours(u"20080215 T103045", kDateTime).read, 3);
  EXPECT_EQ(Ours(u"20080215t103045", kDateTime).read, 3);
  EXPECT_EQ(Ours(u"20080215", kDateTime).read, 3);
  EXPECT_EQ(Ours(u"20080215T1030", kDateTime).read, 5);
}

RC_GTEST_PROP(ScanNumbers, AgreesWithTheCLibrary, ()) {
  const auto letters =
      rc::gen::element<char16_t>(u'0', u'1', u'2', u'9', u'5', u'T', u'-', u'+', u' ', u'\t', u'x');
  const auto text = *rc::gen::container<std::u16string>(letters);
  RC_ASSERT(Ours(text, kDate) == ReferenceDate(text));
  RC_ASSERT(Ours(text, kDateTime) == ReferenceDateTime(text));
}

TEST(TextToLong, ReadsLeadingDigits) {
  EXPECT_EQ(TextToLong(u"12abc"), 12);
  EXPECT_EQ(TextToLong(u" \t-7 8"), -7);
  EXPECT_EQ(TextToLong(u"+5"), 5);
  EXPECT_EQ(TextToLong(u"2147483647"), 2147483647);
  EXPECT_EQ(TextToLong(u"-2147483648"), -2147483647 - 1);
}

TEST(TextToLong, IsZeroWithoutDigits) {
  for (const auto* text : {u"", u"abc", u"-", u"+ 5", u"x12"}) EXPECT_EQ(TextToLong(text), 0);
  EXPECT_EQ(TextToLong(u"0x1F"), 0);
}

TEST(TextToLong, StaysWithinItsBounds) {
  EXPECT_EQ(TextToLong(u"2147483648"), 2147483647);
  EXPECT_EQ(TextToLong(u"4294967297"), 2147483647);
  EXPECT_EQ(TextToLong(u"-2147483649"), -2147483647 - 1);
  EXPECT_EQ(TextToLong(std::u16string(100'000, u'9')), 2147483647);
  EXPECT_EQ(TextToLong(u"-" + std::u16string(100'000, u'9')), -2147483647 - 1);
  EXPECT_EQ(TextToLong(std::u16string(100'000, u'0') + u"7"), 7);
}

}  // namespace
}  // namespace corvane::testing
