#include <array>

#include "tests/wine/answers/answers.h"

namespace answers {
namespace {

constexpr ScanPart kDay[] = {{0, 4}, {0, 2}, {0, 2}};
constexpr ScanPart kMoment[] = {{0, 4}, {0, 2}, {0, 2}, {'T', 2}, {0, 2}, {0, 2}};
constexpr ScanPart kWide[] = {{0, 12}, {0, 25}};

void AskScan(const char* name, std::span<const ScanPart> parts, const Wide& text) {
  std::array<LONG, 6> numbers{};
  std::string answer = Number(std::int64_t{Scan(text, parts, numbers)});
  for (const LONG number : numbers) answer += " " + Number(std::int64_t{number});
  Say(std::string(name) + ": " + Printable(text), answer);
}

void AskText(std::string_view utf8) {
  const Wide text = FromUtf8(utf8);
  AskScan("scan of a day", kDay, text);
  AskScan("scan of a moment", kMoment, text);
  AskScan("scan of long numbers", kWide, text);
  Say("number: " + Printable(text), Number(std::int64_t{ToLong(text)}));
}

constexpr const char* kTexts[] = {
    // Whole and too short.
    "20080215", "20080215T134501", "20080215T134501Z", "200802", "2008", "2", "", "20080215T",
    "20080215T13", "20080215T1345", "20080215T13450", "200802159", "2008021",
    // What does not belong.
    "x", "2008x215", "20080215t134501", "20080215 T134501", "20080215T 134501", "2008 02 15",
    "0x7d80215", "2008.0215", "20,080215", "T134501",
    // Blanks of every kind.
    " ", "  \t\n\v\f\r", " 20080215", "   20080215", "2008  2 15", "2008\t02\n15T\r13\v45\f01",
    "\xC2\xA0"
    "20080215",
    "\xE2\x80\x83"
    "20080215",
    "2008 ", "200802 ",
    // Signs.
    "2008-02-15", "+20080215", "-20080215", "-", "+", "--20080215", "+-20080215", "- 20080215",
    "2008-", "2008+", "2008-021", "2008- 21", "-123+4-5", "20080215T-1+2-3",
    // Digits that are not ASCII's.
    "\xEF\xBC\x92\xEF\xBC\x90\xEF\xBC\x90\xEF\xBC\x98"
    "0215",
    "\xD9\xA2\xD9\xA0\xD9\xA0\xD9\xA8",
    // At the ends of 32 and 64 bits.
    "2147483647", "2147483648", "-2147483648", "-2147483649", "4294967295", "4294967296",
    "-4294967296", "99999999999999999999", "-99999999999999999999", "00000000000000000000007",
    "9223372036854775807", "9223372036854775808", "18446744073709551616", "+7", "+ 7", "7e3", "07",
    "7 8", "1 0000000000000000000000000000", "0", "-0"};

}  // namespace

void AskScans() {
  for (const char* text : kTexts) AskText(text);
  Chance chance(2008);
  constexpr char kCharacters[] = {'0', '1', '2', '3', '4', '5',  '6', '7', '8', '9', '0', '1',
                                  '2', '0', '1', '2', ' ', '\t', '+', '-', 'T', 'T', '.', 'x'};
  for (int i = 0; i < 3000; ++i) {
    std::string text;
    for (auto length = chance.Between(1, 18); length > 0; --length) {
      text += chance.OneOf(kCharacters);
    }
    AskText(text);
  }
  // A moment in which one thing is wrong.
  for (int i = 0; i < 1000; ++i) {
    std::string text = "20080215T134501";
    text[static_cast<std::size_t>(chance.Between(0, 14))] = chance.OneOf(kCharacters);
    AskText(text);
  }
}

}  // namespace answers
