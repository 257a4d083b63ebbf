// UTF-8 and UTF-16, and the letter case that names are compared in.
#pragma once

#include <cstddef>
#include <optional>
#include <string>
#include <string_view>

namespace text {

// What stands for whatever cannot be read.
inline constexpr char32_t kReplacement = 0xFFFD;
inline constexpr std::string_view kReplacementUtf8 = "\xEF\xBF\xBD";

constexpr bool IsLeadSurrogate(char32_t unit) {
  return unit >= 0xD800 && unit < 0xDC00;
}
constexpr bool IsTrailSurrogate(char32_t unit) {
  return unit >= 0xDC00 && unit < 0xE000;
}
constexpr char32_t JoinSurrogates(char16_t lead, char16_t trail) {
  return 0x10000 + ((char32_t{lead} & 0x3FF) << 10) + (trail & 0x3FF);
}

// Takes the first character off a text that is not empty; half a pair counts as one.
constexpr char32_t TakeCharacter(std::u16string_view& text) {
  const char16_t unit = text.front();
  text.remove_prefix(1);
  if (!IsLeadSurrogate(unit) || text.empty() || !IsTrailSurrogate(text.front())) return unit;
  const char32_t character = JoinSurrogates(unit, text.front());
  text.remove_prefix(1);
  return character;
}

// Writes the character, half a pair too, and returns the end of its bytes: four at most.
inline char* PutUtf8(char* out, char32_t character) {
  const auto put = [&out](char32_t byte) { *out++ = static_cast<char>(byte); };
  if (character < 0x80) {
    put(character);
    return out;
  }
  if (character < 0x800) {
    put(0xC0 | character >> 6);
  } else {
    if (character < 0x10000) {
      put(0xE0 | character >> 12);
    } else {
      put(0xF0 | character >> 18);
      put(0x80 | (character >> 12 & 0x3F));
    }
    put(0x80 | (character >> 6 & 0x3F));
  }
  put(0x80 | (character & 0x3F));
  return out;
}
void AppendUtf8(std::string& out, char32_t character);

// Strict: a surrogate without its partner, an overlong or a cut sequence is ill-formed.
bool IsValidUtf8(std::string_view text);
// Nothing when the text is ill-formed.
std::optional<std::string> ToUtf8(std::u16string_view text);
std::optional<std::u16string> FromUtf8(std::string_view text);
// False when the text is ill-formed; `out` then has U+FFFD for each byte that is.
[[nodiscard]] bool AppendFromUtf8(std::u16string& out, std::string_view text);

// With U+FFFD for each ill-formed unit or byte.
std::string ToUtf8Lossy(std::u16string_view text);
std::u16string FromUtf8Lossy(std::string_view text);
std::string RepairUtf8(std::string_view text);

// WTF-8: UTF-8 that can carry every UTF-16 text. A surrogate without its partner becomes the three
// bytes that its value would take, so that text comes back unit for unit. Bytes that are neither
// read as U+FFFD each.
void AppendWtf8(std::string& out, std::u16string_view text);
// False when some bytes read as U+FFFD that were not written as one.
bool IsWtf8(std::string_view text);
std::u16string FromWtf8(std::string_view text);
// The UTF-16 units of the text.
std::size_t Utf16Length(std::string_view text);
// Writes as many.
void DecodeWtf8(std::string_view text, char16_t* out);

// Units as bytes, the lower first. A last byte without its other half does not count.
std::string ToUtf16Le(std::u16string_view text);
std::u16string FromUtf16Le(std::string_view bytes);

// The text as names are compared: each unit's upper case where that is one unit and maps back.
std::u16string Fold(std::u16string_view text);

}  // namespace text
