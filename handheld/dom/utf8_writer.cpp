#include "handheld/dom/utf8_writer.h"

#include <algorithm>
#include <array>
#include <bit>
#include <cstdint>
#include <string>

#include "common/text/unicode.h"
#include "common/text/xml_text.h"

namespace ce::host::dom {
namespace {

// What stands for an ASCII character: empty for itself.
using Replacements = std::array<std::string_view, 128>;
using PlainTable = std::array<bool, 128>;

constexpr std::size_t kLongestReplacement = 6;

constexpr Replacements MakeReplacements(Escape escape) {
  Replacements table{};
  if (escape == Escape::kNone) return table;
  table['&'] = "&amp;";
  table['<'] = "&lt;";
  table['>'] = "&gt;";
  if (escape == Escape::kText) return table;
  table['"'] = "&quot;";
  table['\t'] = "&#9;";
  table['\n'] = "&#10;";
  table['\r'] = "&#13;";
  return table;
}

constexpr Replacements kReplacements[] = {MakeReplacements(Escape::kNone),
                                          MakeReplacements(Escape::kText),
                                          MakeReplacements(Escape::kAttribute)};

constexpr PlainTable MakePlain(const Replacements& replacements) {
  PlainTable plain{};
  for (std::size_t c = 0; c < plain.size(); ++c) {
    plain[c] = text::IsXmlUnit(static_cast<char16_t>(c)) && replacements[c].empty();
  }
  return plain;
}

constexpr PlainTable kPlain[] = {MakePlain(kReplacements[0]), MakePlain(kReplacements[1]),
                                 MakePlain(kReplacements[2])};

char* Put(char* out, std::string_view text) {
  return out + text.copy(out, text.size());
}

// Most text is ASCII that stands for itself: so much of it is looked at and written at once.
constexpr std::size_t kGroup = 8;

// The lowest bit of every byte, and its highest one, which is set for a byte in question.
constexpr std::uint64_t kOnes = 0x0101010101010101;
constexpr std::uint64_t kHigh = 0x8080808080808080;

// Bytes below 0x80 alone.
constexpr std::uint64_t BytesBelow(std::uint64_t bytes, unsigned char bound) {
  return (bytes - kOnes * bound) & kHigh;
}
constexpr std::uint64_t BytesEqual(std::uint64_t bytes, unsigned char value) {
  return BytesBelow(bytes ^ kOnes * value, 1);
}

// The mark may stand at further bytes as well, above one that is right.
constexpr std::uint64_t UnplainBytes(std::uint64_t bytes, Escape escape) {
  std::uint64_t marked = BytesBelow(bytes, ' ');
  if (escape == Escape::kNone) return marked;
  marked |= BytesEqual(bytes, '&') | BytesEqual(bytes, '<') | BytesEqual(bytes, '>');
  return escape == Escape::kText ? marked : marked | BytesEqual(bytes, '"');
}

// Four units of ASCII as bytes.
constexpr std::uint64_t Narrow(std::uint64_t units) {
  units = (units | units >> 8) & 0x0000FFFF0000FFFF;
  return (units | units >> 16) & 0xFFFFFFFF;
}

// Writes up to kGroup units, and something behind them; false when one of them is not ASCII that
// stands for itself.
bool PutGroup(char* out, std::u16string_view text, Escape escape) {
  static_assert(std::endian::native == std::endian::little);
  constexpr std::uint64_t kFourBlanks = 0x0020002000200020;
  std::uint64_t halves[] = {kFourBlanks, kFourBlanks};
  static_assert(sizeof(halves) == kGroup * sizeof(char16_t));
  if (text.size() >= kGroup) {
    std::memcpy(halves, text.data(), sizeof(halves));
  } else {
    std::memcpy(halves, text.data(), text.size() * sizeof(char16_t));
  }
  if (((halves[0] | halves[1]) & 0xFF80FF80FF80FF80) != 0) return false;
  const std::uint64_t bytes = Narrow(halves[0]) | Narrow(halves[1]) << 32;
  if (UnplainBytes(bytes, escape) != 0) return false;
  std::memcpy(out, &bytes, sizeof(bytes));
  return true;
}

// Writes the character beyond ASCII that starts at `at` and moves past it.
char* PutWide(char* out, std::u16string_view text, std::size_t& at) {
  std::u16string_view rest = text.substr(at);
  const char32_t character = text::TakeCharacter(rest);
  at = text.size() - rest.size();
  const bool isCarried = character >= 0x10000 || text::IsXmlUnit(static_cast<char16_t>(character));
  return isCarried ? text::PutUtf8(out, character) : out;
}

}  // namespace

void Utf8Writer::Text(std::u16string_view text, Escape escape) {
  constexpr std::size_t kRun = 1024;
  const PlainTable& plain = kPlain[static_cast<int>(escape)];
  const Replacements& replacements = kReplacements[static_cast<int>(escape)];
  for (std::size_t at = 0; at < text.size();) {
    const std::size_t stop = std::min(text.size(), at + kRun);
    char* out = Reserve((stop - at) * kLongestReplacement + kGroup);
    while (at < stop) {
      const std::size_t end = std::min(at + kGroup, stop);
      if (PutGroup(out, text.substr(at, end - at), escape)) {
        out += end - at;
        at = end;
        continue;
      }
      while (at < end) {
        const char16_t unit = text[at];
        if (unit >= 0x80) {
          out = PutWide(out, text, at);
          continue;
        }
        if (plain[unit]) {
          *out++ = static_cast<char>(unit);
        } else {
          out = Put(out, replacements[unit]);
        }
        ++at;
      }
    }
    used_ = static_cast<std::size_t>(out - buffer_.data());
  }
}

void Utf8Writer::TextWithout(std::u16string_view text, char16_t first, char16_t second) {
  std::u16string safe;
  safe.reserve(text.size());
  // First without what is left out anyway, which would bring the two together.
  for (const char16_t unit : text::XmlCharacters(text)) {
    if (unit == second && safe.ends_with(first)) safe += u' ';
    safe += unit;
  }
  if (first == second && safe.ends_with(first)) safe += u' ';
  Text(safe, Escape::kNone);
}

HRESULT Utf8Writer::Finish() {
  Flush();
  return status_;
}

void Utf8Writer::Flush() {
  for (std::size_t sent = 0; sent < used_ && Succeeded(status_);) {
    DWORD written = 0;
    status_ = stream_->Write(buffer_.data() + sent, static_cast<DWORD>(used_ - sent), &written);
    // A stream may report its failure with a positive code: what it took decides.
    if (Succeeded(status_)) status_ = written == 0 || written > used_ - sent ? E_FAIL : S_OK;
    sent += written;
  }
  used_ = 0;
}

}  // namespace ce::host::dom
