#include "handheld/store/stored_text.h"

#include <algorithm>
#include <cstdint>

namespace ce::host {
namespace {

constexpr char32_t kReplacement = 0xFFFD;

bool IsHigh(char32_t unit) {
  return unit >= 0xD800 && unit < 0xDC00;
}
bool IsLow(char32_t unit) {
  return unit >= 0xDC00 && unit < 0xE000;
}

// Without an early end, so that the compiler can take many bytes at once.
bool IsAscii(std::string_view text) {
  unsigned char seen = 0;
  for (const char byte : text) seen |= static_cast<unsigned char>(byte);
  return seen < 0x80;
}

void AppendCharacter(std::string& out, char32_t character) {
  const auto put = [&out](char32_t byte) { out.push_back(static_cast<char>(byte)); };
  if (character < 0x80) return put(character);
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
}

struct Decoded {
  char32_t character;
  std::size_t bytes;
  bool valid;
};

Decoded DecodeFirst(std::string_view text) {
  const auto byte = [&text](std::size_t i) { return static_cast<unsigned char>(text[i]); };
  const unsigned char lead = byte(0);
  if (lead < 0x80) return {lead, 1, true};
  const std::size_t length = lead >= 0xF0 ? 4 : lead >= 0xE0 ? 3 : 2;
  if (lead < 0xC2 || lead > 0xF4 || text.size() < length) return {kReplacement, 1, false};
  char32_t character = lead & (0x7F >> length);
  for (std::size_t i = 1; i < length; ++i) {
    if ((byte(i) & 0xC0) != 0x80) return {kReplacement, 1, false};
    character = character << 6 | (byte(i) & 0x3F);
  }
  constexpr char32_t kLeast[] = {0, 0, 0x80, 0x800, 0x10000};
  if (character < kLeast[length] || character > 0x10FFFF) return {kReplacement, 1, false};
  return {character, length, true};
}

// Calls `put` with each UTF-16 unit.
template <typename Put>
void Decode(std::string_view text, Put&& put) {
  while (!text.empty()) {
    const Decoded decoded = DecodeFirst(text);
    text.remove_prefix(decoded.bytes);
    if (decoded.character < 0x10000) {
      put(static_cast<char16_t>(decoded.character));
    } else {
      const char32_t rest = decoded.character - 0x10000;
      put(static_cast<char16_t>(0xD800 + (rest >> 10)));
      put(static_cast<char16_t>(0xDC00 + (rest & 0x3FF)));
    }
  }
}

void DecodeInto(std::string_view stored, bool ascii, char16_t* out) {
  if (ascii) {
    std::transform(stored.begin(), stored.end(), out,
                   [](char byte) { return static_cast<char16_t>(byte); });
  } else {
    Decode(stored, [&out](char16_t unit) { *out++ = unit; });
  }
}

}  // namespace

void AppendStored(std::string& out, std::u16string_view text) {
  out.reserve(out.size() + text.size());
  for (std::size_t i = 0; i < text.size(); ++i) {
    char32_t character = text[i];
    if (IsHigh(character) && i + 1 < text.size() && IsLow(text[i + 1])) {
      character = 0x10000 + ((character - 0xD800) << 10) + (text[++i] - char32_t{0xDC00});
    }
    AppendCharacter(out, character);
  }
}

std::size_t StoredUnits(std::string_view stored) {
  if (IsAscii(stored)) return stored.size();
  std::size_t units = 0;
  Decode(stored, [&units](char16_t) { ++units; });
  return units;
}

bool IsStoredText(std::string_view stored) {
  if (IsAscii(stored)) return true;
  while (!stored.empty()) {
    const Decoded decoded = DecodeFirst(stored);
    if (!decoded.valid) return false;
    stored.remove_prefix(decoded.bytes);
  }
  return true;
}

std::u16string FromStored(std::string_view stored) {
  const bool ascii = IsAscii(stored);
  std::u16string text(ascii ? stored.size() : StoredUnits(stored), u'\0');
  DecodeInto(stored, ascii, text.data());
  return text;
}

BSTR BstrFromStored(std::string_view stored) {
  const bool ascii = IsAscii(stored);
  const std::size_t units = ascii ? stored.size() : StoredUnits(stored);
  BSTR text = SysAllocStringLen(nullptr, static_cast<UINT>(units));
  if (text) DecodeInto(stored, ascii, text);
  return text;
}

}  // namespace ce::host
