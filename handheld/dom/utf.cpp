#include "handheld/dom/utf.h"

#include <algorithm>
#include <array>

namespace ce::host::dom {
namespace {

constexpr char32_t kMalformed = 0xFFFFFFFF;

// Decodes the sequence of two or more bytes at `at` and moves past it.
char32_t DecodeSequence(std::string_view bytes, std::size_t& at) {
  const auto lead = static_cast<unsigned char>(bytes[at]);
  const std::size_t length = lead >= 0xF0 ? 4 : lead >= 0xE0 ? 3 : 2;
  if (lead < 0xC2 || lead > 0xF4 || bytes.size() - at < length) return kMalformed;
  char32_t code = lead & (0xFFu >> (length + 1));
  for (std::size_t i = 1; i < length; ++i) {
    const auto next = static_cast<unsigned char>(bytes[at + i]);
    if ((next & 0xC0) != 0x80) return kMalformed;
    code = (code << 6) | (next & 0x3F);
  }
  constexpr std::array<char32_t, 5> kSmallest{0, 0, 0x80, 0x800, 0x10000};
  if (code < kSmallest[length] || code > 0x10FFFF || (code >= 0xD800 && code < 0xE000)) {
    return kMalformed;
  }
  at += length;
  return code;
}

struct Range {
  char32_t first;
  char32_t last;
};

constexpr Range kNameStart[] = {
    {':', ':'},       {'A', 'Z'},       {'_', '_'},       {'a', 'z'},
    {0xC0, 0xD6},     {0xD8, 0xF6},     {0xF8, 0x2FF},    {0x370, 0x37D},
    {0x37F, 0x1FFF},  {0x200C, 0x200D}, {0x2070, 0x218F}, {0x2C00, 0x2FEF},
    {0x3001, 0xD7FF}, {0xF900, 0xFDCF}, {0xFDF0, 0xFFFD}, {0x10000, 0xEFFFF},
};
constexpr Range kNameOther[] = {
    {'-', '.'}, {'0', '9'}, {0xB7, 0xB7}, {0x300, 0x36F}, {0x203F, 0x2040},
};

template <std::size_t N>
bool Contains(const Range (&ranges)[N], char32_t code) {
  return std::any_of(std::begin(ranges), std::end(ranges),
                     [code](Range range) { return code >= range.first && code <= range.last; });
}

}  // namespace

bool AppendUtf8(std::string_view bytes, std::u16string& text) {
  const std::size_t before = text.size();
  text.resize(before + bytes.size());
  char16_t* out = text.data() + before;
  for (std::size_t at = 0; at < bytes.size();) {
    const auto byte = static_cast<unsigned char>(bytes[at]);
    if (byte < 0x80) {
      *out++ = byte;
      ++at;
      continue;
    }
    const char32_t code = DecodeSequence(bytes, at);
    if (code == kMalformed) return false;
    if (code < 0x10000) {
      *out++ = static_cast<char16_t>(code);
    } else {
      *out++ = static_cast<char16_t>(0xD7C0 + (code >> 10));
      *out++ = static_cast<char16_t>(0xDC00 + (code & 0x3FF));
    }
  }
  text.resize(static_cast<std::size_t>(out - text.data()));
  return true;
}

std::size_t Utf16Length(std::string_view bytes) {
  std::size_t length = 0;
  for (const char byte : bytes) {
    const auto value = static_cast<unsigned char>(byte);
    // One for the first byte of a character, another for one beyond the first plane.
    length += static_cast<std::size_t>((value & 0xC0) != 0x80) + (value >= 0xF0 ? 1 : 0);
  }
  return length;
}

std::u16string XmlCharacters(std::u16string_view text) {
  std::u16string kept;
  kept.reserve(text.size());
  for (std::size_t at = 0; at < text.size(); ++at) {
    if (IsXmlUnit(text[at])) {
      kept += text[at];
    } else if (at + 1 < text.size() && IsLeadSurrogate(text[at]) &&
               IsTrailSurrogate(text[at + 1])) {
      kept += text.substr(at++, 2);
    }
  }
  return kept;
}

bool IsXmlName(std::u16string_view text) {
  for (std::size_t at = 0; at < text.size(); ++at) {
    char32_t code = text[at];
    if ((code | 0x20) >= 'a' && (code | 0x20) <= 'z') continue;
    const bool first = at == 0;
    if (IsLeadSurrogate(text[at]) && at + 1 < text.size() && IsTrailSurrogate(text[at + 1])) {
      code = JoinSurrogates(text[at], text[at + 1]);
      ++at;
    }
    if (!Contains(kNameStart, code) && (first || !Contains(kNameOther, code))) return false;
  }
  return !text.empty();
}

bool IsBlank(std::u16string_view text) {
  return text.find_first_not_of(u" \t\r\n") == std::u16string_view::npos;
}

}  // namespace ce::host::dom
