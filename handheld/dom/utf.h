// UTF-8 to UTF-16, and the characters and names that XML allows.
#pragma once

#include <string>
#include <string_view>

namespace ce::host::dom {

// False when the bytes are not strict UTF-8 (overlong forms and surrogates are not); `text` is then
// undefined.
[[nodiscard]] bool AppendUtf8(std::string_view bytes, std::u16string& text);

// The units that strict UTF-8 bytes make.
[[nodiscard]] std::size_t Utf16Length(std::string_view bytes);

constexpr bool IsLeadSurrogate(char16_t unit) {
  return (unit & 0xFC00) == 0xD800;
}
constexpr bool IsTrailSurrogate(char16_t unit) {
  return (unit & 0xFC00) == 0xDC00;
}
constexpr char32_t JoinSurrogates(char16_t lead, char16_t trail) {
  return 0x10000 + ((char32_t{lead} & 0x3FF) << 10) + (trail & 0x3FF);
}

// A unit that is a character of XML by itself: no half of a pair.
constexpr bool IsXmlUnit(char16_t unit) {
  if (unit < 0x20) return unit == '\t' || unit == '\n' || unit == '\r';
  return unit < 0xD800 || (unit >= 0xE000 && unit < 0xFFFE);
}

// The text without what XML cannot carry: controls, halves of pairs, U+FFFE and U+FFFF.
[[nodiscard]] std::u16string XmlCharacters(std::u16string_view text);

// A name as XML 1.0 (fifth edition) defines it; colons are name characters.
[[nodiscard]] bool IsXmlName(std::u16string_view text);

// White space of XML alone; true for the empty text.
[[nodiscard]] bool IsBlank(std::u16string_view text);

}  // namespace ce::host::dom
