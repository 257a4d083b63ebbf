#include "common/text/utf.h"

#include <clocale>
#include <cstddef>
#include <cstdint>
#include <cwctype>

namespace ce::host {
namespace {

constexpr char32_t kReplacement = 0xFFFD;

bool IsHighSurrogate(char32_t unit) {
  return unit >= 0xD800 && unit < 0xDC00;
}
bool IsLowSurrogate(char32_t unit) {
  return unit >= 0xDC00 && unit < 0xE000;
}

void AppendUtf8(std::string& out, char32_t character) {
  const auto put = [&out](char32_t byte) { out.push_back(static_cast<char>(byte)); };
  if (character < 0x80) {
    put(character);
  } else if (character < 0x800) {
    put(0xC0 | character >> 6);
    put(0x80 | (character & 0x3F));
  } else if (character < 0x10000) {
    put(0xE0 | character >> 12);
    put(0x80 | (character >> 6 & 0x3F));
    put(0x80 | (character & 0x3F));
  } else {
    put(0xF0 | character >> 18);
    put(0x80 | (character >> 12 & 0x3F));
    put(0x80 | (character >> 6 & 0x3F));
    put(0x80 | (character & 0x3F));
  }
}

void AppendUtf16(std::u16string& out, char32_t character) {
  if (character < 0x10000) {
    out.push_back(static_cast<char16_t>(character));
    return;
  }
  character -= 0x10000;
  out.push_back(static_cast<char16_t>(0xD800 + (character >> 10)));
  out.push_back(static_cast<char16_t>(0xDC00 + (character & 0x3FF)));
}

bool EncodeUtf8(std::u16string_view text, std::string& out) {
  bool wellFormed = true;
  out.reserve(text.size());
  for (std::size_t i = 0; i < text.size(); ++i) {
    char32_t character = text[i];
    if (IsHighSurrogate(character) && i + 1 < text.size() && IsLowSurrogate(text[i + 1])) {
      character = 0x10000 + ((character - 0xD800) << 10) + (char32_t{text[++i]} - 0xDC00);
    } else if (IsHighSurrogate(character) || IsLowSurrogate(character)) {
      character = kReplacement;
      wellFormed = false;
    }
    AppendUtf8(out, character);
  }
  return wellFormed;
}

// The length of the sequence at the front and its character; 0 when it is ill-formed.
std::size_t DecodeOne(std::string_view text, char32_t& character) {
  const auto byte = [&text](std::size_t i) { return static_cast<unsigned char>(text[i]); };
  const unsigned char lead = byte(0);
  if (lead < 0x80) {
    character = lead;
    return 1;
  }
  const std::size_t length = lead >= 0xF0 ? 4 : lead >= 0xE0 ? 3 : 2;
  if (lead < 0xC2 || lead > 0xF4 || text.size() < length) return 0;
  character = lead & (0x7F >> length);
  for (std::size_t i = 1; i < length; ++i) {
    if ((byte(i) & 0xC0) != 0x80) return 0;
    character = character << 6 | (byte(i) & 0x3F);
  }
  constexpr char32_t kLeast[] = {0, 0, 0x80, 0x800, 0x10000};
  if (character < kLeast[length] || character > 0x10FFFF) return 0;
  if (IsHighSurrogate(character) || IsLowSurrogate(character)) return 0;
  return length;
}

bool DecodeUtf8(std::string_view text, std::u16string& out) {
  bool wellFormed = true;
  out.reserve(text.size());
  while (!text.empty()) {
    char32_t character = kReplacement;
    std::size_t length = DecodeOne(text, character);
    if (length == 0) {
      character = kReplacement;
      length = 1;
      wellFormed = false;
    }
    AppendUtf16(out, character);
    text.remove_prefix(length);
  }
  return wellFormed;
}

// Independent of the program's own locale, so that names match alike everywhere.
locale_t CaseLocale() {
  static const locale_t locale = newlocale(LC_CTYPE_MASK, "C.UTF-8", locale_t{});
  return locale;
}

char16_t FoldUnit(char16_t unit) {
  if (unit < 0x80) return unit >= u'a' && unit <= u'z' ? static_cast<char16_t>(unit - 32) : unit;
  const locale_t locale = CaseLocale();
  if (!locale || (unit >= 0xD800 && unit < 0xE000)) return unit;
  const std::wint_t upper = towupper_l(unit, locale);
  if (upper > 0xFFFF || towlower_l(upper, locale) != unit) return unit;
  return static_cast<char16_t>(upper);
}

}  // namespace

std::optional<std::string> ToUtf8(std::u16string_view text) {
  std::string out;
  if (!EncodeUtf8(text, out)) return std::nullopt;
  return out;
}

std::optional<std::u16string> FromUtf8(std::string_view text) {
  std::u16string out;
  if (!DecodeUtf8(text, out)) return std::nullopt;
  return out;
}

std::string ToUtf8Lossy(std::u16string_view text) {
  std::string out;
  EncodeUtf8(text, out);
  return out;
}

std::u16string FromUtf8Lossy(std::string_view text) {
  std::u16string out;
  DecodeUtf8(text, out);
  return out;
}

std::u16string Fold(std::u16string_view text) {
  std::u16string folded(text);
  for (char16_t& unit : folded) unit = FoldUnit(unit);
  return folded;
}

}  // namespace ce::host
