#include "handheld/dom/utf8_writer.h"

#include <algorithm>
#include <array>
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

// Writes the character beyond ASCII that starts at `at` and moves past it.
char* PutWide(char* out, std::u16string_view text, std::size_t& at) {
  std::u16string_view rest = text.substr(at);
  const char32_t character = text::TakeCharacter(rest);
  at = text.size() - rest.size();
  const bool isCarried = character >= 0x10000 || text::IsXmlUnit(static_cast<char16_t>(character));
  return isCarried ? text::PutUtf8(out, character) : out;
}

}  // namespace

Utf8Writer::Utf8Writer(ISequentialStream* stream) : stream_(stream), buffer_(new char[kPiece]) {}

void Utf8Writer::Ascii(std::string_view text) {
  used_ = static_cast<std::size_t>(Put(Reserve(text.size()), text) - buffer_.get());
}

void Utf8Writer::Text(std::u16string_view text, Escape escape) {
  constexpr std::size_t kRun = 1024;
  const PlainTable& plain = kPlain[static_cast<int>(escape)];
  const Replacements& replacements = kReplacements[static_cast<int>(escape)];
  for (std::size_t at = 0; at < text.size();) {
    const std::size_t stop = std::min(text.size(), at + kRun);
    char* out = Reserve((stop - at) * kLongestReplacement);
    while (at < stop) {
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
    used_ = static_cast<std::size_t>(out - buffer_.get());
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

char* Utf8Writer::Reserve(std::size_t bytes) {
  if (kPiece - used_ < bytes) Flush();
  return buffer_.get() + used_;
}

void Utf8Writer::Flush() {
  for (std::size_t sent = 0; sent < used_ && Succeeded(status_);) {
    DWORD written = 0;
    status_ = stream_->Write(buffer_.get() + sent, static_cast<DWORD>(used_ - sent), &written);
    // A stream may report its failure with a positive code: what it took decides.
    if (Succeeded(status_)) status_ = written == 0 || written > used_ - sent ? E_FAIL : S_OK;
    sent += written;
  }
  used_ = 0;
}

}  // namespace ce::host::dom
