// The characters, names and text that XML allows.
#pragma once

#include <string>
#include <string_view>

namespace text {

// A unit that is a character of XML by itself: no half of a pair.
constexpr bool IsXmlUnit(char16_t unit) {
  if (unit < 0x20) return unit == '\t' || unit == '\n' || unit == '\r';
  return unit < 0xD800 || (unit >= 0xE000 && unit < 0xFFFE);
}

// The text without what XML cannot carry: controls, halves of pairs, U+FFFE and U+FFFF.
std::u16string XmlCharacters(std::u16string_view text);

// A name as XML 1.0 (fifth edition) defines it; colons are name characters.
bool IsXmlName(std::u16string_view text);

// White space of XML alone; true for the empty text.
bool IsXmlSpace(std::u16string_view text);

// Escaped for element text. What XML cannot carry is left out (control characters) or replaced by
// U+FFFD (bytes that are not UTF-8); carriage return plus line feed becomes a line feed.
std::string XmlText(std::string_view text);

// Whether XmlText leaves out more of it than a line end's carriage return.
bool HasWhatXmlLeavesOut(std::string_view text);

}  // namespace text
