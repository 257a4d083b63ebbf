#include "common/text/text.h"

#include <algorithm>
#include <iterator>

#include "common/text/unicode.h"

namespace text {
namespace {

char UpperAscii(char c) {
  return c >= 'a' && c <= 'z' ? static_cast<char>(c - 'a' + 'A') : c;
}

struct CharacterRange {
  char32_t first;
  char32_t last;
};

// Controls, marks of direction, separators of lines and what has no width.
constexpr CharacterRange kSteering[] = {{0x0000, 0x001F}, {0x007F, 0x009F},  {0x00AD, 0x00AD},
                                        {0x061C, 0x061C}, {0x180E, 0x180E},  {0x200B, 0x200F},
                                        {0x2028, 0x202E}, {0x2060, 0x206F},  {0xFEFF, 0xFEFF},
                                        {0xFFF9, 0xFFFB}, {0xE0000, 0xE007F}};

bool Steers(char32_t character) {
  return std::any_of(std::begin(kSteering), std::end(kSteering), [=](const CharacterRange& range) {
    return character >= range.first && character <= range.last;
  });
}

enum class LineFeeds { kStay, kAreBlanks };

std::string WithoutSteering(std::string_view text, LineFeeds lineFeeds) {
  const bool plain = std::all_of(text.begin(), text.end(), [](char c) {
    return static_cast<unsigned char>(c) >= 0x20 && static_cast<unsigned char>(c) < 0x7F;
  });
  if (plain) return std::string(text);
  const std::u16string units = FromUtf8Lossy(text);
  std::string shown;
  for (std::u16string_view left = units; !left.empty();) {
    const char32_t character = TakeCharacter(left);
    const bool stays = character == U'\n' ? lineFeeds == LineFeeds::kStay : !Steers(character);
    AppendUtf8(shown, stays ? character : U' ');
  }
  return shown;
}

}  // namespace

bool EqualsNoCase(std::string_view a, std::string_view b) {
  return a.size() == b.size() && std::equal(a.begin(), a.end(), b.begin(), [](char x, char y) {
           return UpperAscii(x) == UpperAscii(y);
         });
}

bool StartsWithNoCase(std::string_view text, std::string_view prefix) {
  return EqualsNoCase(text.substr(0, prefix.size()), prefix);
}

std::string ToUpperAscii(std::string_view text) {
  std::string upper(text);
  std::transform(upper.begin(), upper.end(), upper.begin(), UpperAscii);
  return upper;
}

bool IsControl(char c) {
  return (static_cast<unsigned char>(c) < 0x20 && c != '\t') || c == 0x7F;
}

std::string_view TrimBlanks(std::string_view text) {
  const std::size_t first = text.find_first_not_of(" \t");
  if (first == std::string_view::npos) return {};
  return text.substr(first, text.find_last_not_of(" \t") - first + 1);
}

std::string Shown(std::string_view text) {
  return WithoutSteering(text, LineFeeds::kStay);
}

std::string Excerpt(std::string_view text) {
  constexpr std::size_t kLongest = 60;
  std::size_t length = std::min(text.size(), kLongest);
  while (length > 0 && length < text.size() && (text[length] & 0xC0) == 0x80) --length;
  std::string excerpt = WithoutSteering(text.substr(0, length), LineFeeds::kAreBlanks);
  if (length < text.size()) excerpt += "…";
  return excerpt;
}

std::string OnOneLine(std::string_view text) {
  return std::string(TrimBlanks(WithoutSteering(text, LineFeeds::kAreBlanks)));
}

std::string NormalizeLineBreaks(std::string text) {
  std::size_t length = 0;
  for (std::size_t i = 0; i < text.size(); ++i) {
    if (text[i] == '\r') {
      text[length++] = '\n';
      if (i + 1 < text.size() && text[i + 1] == '\n') ++i;
    } else {
      text[length++] = text[i];
    }
  }
  text.resize(length);
  return text;
}

}  // namespace text
