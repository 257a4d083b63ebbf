#include "common/text/unicode.h"

#include <algorithm>
#include <clocale>
#include <cstdint>
#include <cstring>
#include <cwctype>

#include "common/text/little_endian.h"

namespace text {
namespace {

// What a surrogate without its partner, or its three bytes, are taken for.
enum class Surrogates { kIllFormed, kCharacters };

bool IsSurrogate(char32_t character) {
  return character >= 0xD800 && character < 0xE000;
}

template <typename Word>
Word WordAt(const char* bytes) {
  Word word;
  std::memcpy(&word, bytes, sizeof(word));
  return word;
}

// Most text is, so that it is worth a look of its own: many bytes at once, some of them twice.
bool IsAscii(std::string_view text) {
  const char* const bytes = text.data();
  const std::size_t size = text.size();
  std::uint64_t all = 0;
  if (size >= 8) {
    for (std::size_t at = 0; at + 8 < size; at += 8) all |= WordAt<std::uint64_t>(bytes + at);
    all |= WordAt<std::uint64_t>(bytes + size - 8);
  } else if (size >= 4) {
    all = WordAt<std::uint32_t>(bytes) | WordAt<std::uint32_t>(bytes + size - 4);
  } else {
    for (const char byte : text) all |= static_cast<unsigned char>(byte);
  }
  return (all & 0x8080808080808080) == 0;
}

// Of a size that is handed over in a register, since this is where most time goes.
struct Decoded {
  char32_t character;
  std::uint32_t bytes;  // 0: ill-formed
};

// The sequence of two or more bytes at the front.
Decoded DecodeFirst(std::string_view text, Surrogates surrogates) {
  const auto byte = [&text](std::size_t i) { return static_cast<unsigned char>(text[i]); };
  const unsigned char lead = byte(0);
  const std::uint32_t length = lead >= 0xF0 ? 4 : lead >= 0xE0 ? 3 : 2;
  if (lead < 0xC2 || lead > 0xF4 || text.size() < length) return {};
  char32_t character = lead & (0x7F >> length);
  for (std::uint32_t i = 1; i < length; ++i) {
    if ((byte(i) & 0xC0) != 0x80) return {};
    character = character << 6 | (byte(i) & 0x3F);
  }
  constexpr char32_t kLeast[] = {0, 0, 0x80, 0x800, 0x10000};
  if (character < kLeast[length] || character > 0x10FFFF) return {};
  if (surrogates == Surrogates::kIllFormed && IsSurrogate(character)) return {};
  return {character, length};
}

// Calls `take` with each character; false when some of them are ill-formed.
template <typename Take>
bool Decode(std::string_view text, Surrogates surrogates, Take&& take) {
  bool wellFormed = true;
  while (!text.empty()) {
    Decoded first{static_cast<unsigned char>(text.front()), 1};
    if (first.character >= 0x80) first = DecodeFirst(text, surrogates);
    if (first.bytes == 0) {
      first = {kReplacement, 1};
      wellFormed = false;
    }
    take(first.character);
    text.remove_prefix(first.bytes);
  }
  return wellFormed;
}

// Moves `out` behind what it writes.
bool DecodeTo(char16_t*& out, std::string_view text, Surrogates surrogates) {
  if (IsAscii(text)) {
    out = std::copy(text.begin(), text.end(), out);
    return true;
  }
  char16_t* to = out;
  const bool wellFormed = Decode(text, surrogates, [&to](char32_t character) {
    if (character >= 0x10000) {
      *to++ = static_cast<char16_t>(0xD7C0 + (character >> 10));
      character = 0xDC00 + (character & 0x3FF);
    }
    *to++ = static_cast<char16_t>(character);
  });
  out = to;
  return wellFormed;
}

bool Encode(std::string& out, std::u16string_view text, Surrogates surrogates) {
  bool wellFormed = true;
  out.reserve(out.size() + text.size());
  while (!text.empty()) {
    char32_t character = TakeCharacter(text);
    if (surrogates == Surrogates::kIllFormed && IsSurrogate(character)) {
      character = kReplacement;
      wellFormed = false;
    }
    AppendUtf8(out, character);
  }
  return wellFormed;
}

bool IsWellFormed(std::string_view text, Surrogates surrogates) {
  return IsAscii(text) || Decode(text, surrogates, [](char32_t) {});
}

// Independent of the program's own locale, so that names match alike everywhere.
locale_t CaseLocale() {
  static const locale_t locale = newlocale(LC_CTYPE_MASK, "C.UTF-8", locale_t{});
  return locale;
}

char16_t FoldUnit(char16_t unit) {
  if (unit < 0x80) return unit >= u'a' && unit <= u'z' ? static_cast<char16_t>(unit - 32) : unit;
  const locale_t locale = CaseLocale();
  if (!locale || IsSurrogate(unit)) return unit;
  const std::wint_t upper = towupper_l(unit, locale);
  if (upper > 0xFFFF || towlower_l(upper, locale) != unit) return unit;
  return static_cast<char16_t>(upper);
}

}  // namespace

void AppendUtf8(std::string& out, char32_t character) {
  if (character < 0x80) return out.push_back(static_cast<char>(character));
  char bytes[4];
  out.append(bytes, PutUtf8(bytes, character));
}

bool IsValidUtf8(std::string_view text) {
  return IsWellFormed(text, Surrogates::kIllFormed);
}

std::optional<std::string> ToUtf8(std::u16string_view text) {
  std::string out;
  if (!Encode(out, text, Surrogates::kIllFormed)) return std::nullopt;
  return out;
}

std::optional<std::u16string> FromUtf8(std::string_view text) {
  std::u16string out;
  if (!AppendFromUtf8(out, text)) return std::nullopt;
  return out;
}

bool AppendFromUtf8(std::u16string& out, std::string_view text) {
  const std::size_t before = out.size();
  out.resize(before + text.size());
  char16_t* end = out.data() + before;
  const bool wellFormed = DecodeTo(end, text, Surrogates::kIllFormed);
  out.resize(static_cast<std::size_t>(end - out.data()));
  return wellFormed;
}

std::string ToUtf8Lossy(std::u16string_view text) {
  std::string out;
  Encode(out, text, Surrogates::kIllFormed);
  return out;
}

std::u16string FromUtf8Lossy(std::string_view text) {
  std::u16string out;
  static_cast<void>(AppendFromUtf8(out, text));
  return out;
}

std::string RepairUtf8(std::string_view text) {
  std::string repaired;
  repaired.reserve(text.size());
  Decode(text, Surrogates::kIllFormed,
         [&](char32_t character) { AppendUtf8(repaired, character); });
  return repaired;
}

void AppendWtf8(std::string& out, std::u16string_view text) {
  Encode(out, text, Surrogates::kCharacters);
}

bool IsWtf8(std::string_view text) {
  return IsWellFormed(text, Surrogates::kCharacters);
}

std::u16string FromWtf8(std::string_view text) {
  std::u16string units(Utf16Length(text), u'\0');
  DecodeWtf8(text, units.data());
  return units;
}

std::size_t Utf16Length(std::string_view text) {
  if (IsAscii(text)) return text.size();
  std::size_t units = 0;
  Decode(text, Surrogates::kCharacters,
         [&](char32_t character) { units += character < 0x10000 ? 1 : 2; });
  return units;
}

void DecodeWtf8(std::string_view text, char16_t* out) {
  DecodeTo(out, text, Surrogates::kCharacters);
}

std::string ToUtf16Le(std::u16string_view text) {
  std::string bytes;
  bytes.reserve(text.size() * 2);
  for (const char16_t unit : text) PutHalfWord(bytes, unit);
  return bytes;
}

std::u16string FromUtf16Le(std::string_view bytes) {
  std::u16string text(bytes.size() / 2, u'\0');
  for (std::size_t i = 0; i < text.size(); ++i) text[i] = HalfWordAt(bytes, 2 * i);
  return text;
}

std::u16string Fold(std::u16string_view text) {
  std::u16string folded(text);
  for (char16_t& unit : folded) unit = FoldUnit(unit);
  return folded;
}

}  // namespace text
