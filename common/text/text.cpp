#include "common/text/text.h"

#include <iconv.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <cstdint>

namespace formats {
namespace {

constexpr std::string_view kReplacement = "\xEF\xBF\xBD";

char UpperAscii(char c) {
  return c >= 'a' && c <= 'z' ? static_cast<char>(c - 'a' + 'A') : c;
}

// The length of the well-formed sequence at the start of `text`, 0 for an ill-formed one.
std::size_t Utf8SequenceLength(std::string_view text) {
  const auto byte = [&](std::size_t i) {
    return i < text.size() ? static_cast<unsigned char>(text[i]) : 0u;
  };
  const auto follows = [&](std::size_t i) { return (byte(i) & 0xC0u) == 0x80u; };
  const unsigned lead = byte(0);
  if (lead < 0x80) return 1;
  if (lead >= 0xC2 && lead <= 0xDF) return follows(1) ? 2 : 0;
  if (lead >= 0xE0 && lead <= 0xEF) {
    const bool overlong = lead == 0xE0 && byte(1) < 0xA0;
    const bool surrogate = lead == 0xED && byte(1) > 0x9F;
    return follows(1) && follows(2) && !overlong && !surrogate ? 3 : 0;
  }
  if (lead >= 0xF0 && lead <= 0xF4) {
    const bool overlong = lead == 0xF0 && byte(1) < 0x90;
    const bool beyond = lead == 0xF4 && byte(1) > 0x8F;
    return follows(1) && follows(2) && follows(3) && !overlong && !beyond ? 4 : 0;
  }
  return 0;
}

void AppendUtf8(std::string& out, unsigned codePoint) {
  if (codePoint < 0x80) {
    out += static_cast<char>(codePoint);
  } else if (codePoint < 0x800) {
    out += static_cast<char>(0xC0 | (codePoint >> 6));
    out += static_cast<char>(0x80 | (codePoint & 0x3F));
  } else {
    out += static_cast<char>(0xE0 | (codePoint >> 12));
    out += static_cast<char>(0x80 | ((codePoint >> 6) & 0x3F));
    out += static_cast<char>(0x80 | (codePoint & 0x3F));
  }
}

// Windows-1252 from 0x80 to 0x9F; its five holes stand for the control characters.
constexpr std::array<std::uint16_t, 32> kWindows1252 = {
    0x20AC, 0x0081, 0x201A, 0x0192, 0x201E, 0x2026, 0x2020, 0x2021, 0x02C6, 0x2030, 0x0160,
    0x2039, 0x0152, 0x008D, 0x017D, 0x008F, 0x0090, 0x2018, 0x2019, 0x201C, 0x201D, 0x2022,
    0x2013, 0x2014, 0x02DC, 0x2122, 0x0161, 0x203A, 0x0153, 0x009D, 0x017E, 0x0178};

// The sets that may be named, by their letters and digits. The list is closed: a name in a file
// decides nothing about what the system's converter loads.
struct Charset {
  std::string_view key;
  const char* converter;  // null: Windows-1252, which the Latin-1 of real files always is
};
constexpr Charset kCharsets[] = {
    {"USASCII", nullptr},         {"ASCII", nullptr},
    {"ISO88591", nullptr},        {"LATIN1", nullptr},
    {"WINDOWS1252", nullptr},     {"CP1252", nullptr},
    {"ISO88592", "ISO-8859-2"},   {"ISO88593", "ISO-8859-3"},
    {"ISO88594", "ISO-8859-4"},   {"ISO88595", "ISO-8859-5"},
    {"ISO88596", "ISO-8859-6"},   {"ISO88597", "ISO-8859-7"},
    {"ISO88598", "ISO-8859-8"},   {"ISO88599", "ISO-8859-9"},
    {"ISO885910", "ISO-8859-10"}, {"ISO885911", "ISO-8859-11"},
    {"ISO885913", "ISO-8859-13"}, {"ISO885914", "ISO-8859-14"},
    {"ISO885915", "ISO-8859-15"}, {"ISO885916", "ISO-8859-16"},
    {"WINDOWS1250", "CP1250"},    {"CP1250", "CP1250"},
    {"WINDOWS1251", "CP1251"},    {"CP1251", "CP1251"},
    {"WINDOWS1253", "CP1253"},    {"CP1253", "CP1253"},
    {"WINDOWS1254", "CP1254"},    {"CP1254", "CP1254"},
    {"WINDOWS1255", "CP1255"},    {"CP1255", "CP1255"},
    {"WINDOWS1256", "CP1256"},    {"CP1256", "CP1256"},
    {"WINDOWS1257", "CP1257"},    {"CP1257", "CP1257"},
    {"WINDOWS1258", "CP1258"},    {"CP1258", "CP1258"},
    {"WINDOWS874", "CP874"},      {"TIS620", "CP874"},
    {"KOI8R", "KOI8-R"},          {"KOI8U", "KOI8-U"},
    {"IBM437", "CP437"},          {"CP437", "CP437"},
    {"IBM850", "CP850"},          {"CP850", "CP850"},
    {"IBM852", "CP852"},          {"CP852", "CP852"},
    {"IBM866", "CP866"},          {"CP866", "CP866"},
    {"MACINTOSH", "MACINTOSH"},   {"SHIFTJIS", "CP932"},
    {"XSJIS", "CP932"},           {"SJIS", "CP932"},
    {"WINDOWS31J", "CP932"},      {"CP932", "CP932"},
    {"EUCJP", "EUC-JP"},          {"ISO2022JP", "ISO-2022-JP"},
    {"GB2312", "GB18030"},        {"GBK", "GB18030"},
    {"CP936", "GB18030"},         {"GB18030", "GB18030"},
    {"BIG5", "BIG5-HKSCS"},       {"CP950", "CP950"},
    {"EUCKR", "CP949"},           {"KSC56011987", "CP949"},
    {"CP949", "CP949"},           {"UTF16LE", "UTF-16LE"},
    {"UTF16BE", "UTF-16BE"},      {"UTF16", "UTF-16"},
};

class Converter {
 public:
  explicit Converter(const char* charset) : handle_(iconv_open("UTF-8", charset)) {}
  ~Converter() {
    if (valid()) iconv_close(handle_);
  }
  Converter(const Converter&) = delete;
  Converter& operator=(const Converter&) = delete;
  bool valid() const { return handle_ != reinterpret_cast<iconv_t>(-1); }
  iconv_t handle() const { return handle_; }

 private:
  iconv_t handle_;
};

std::optional<Conversion> ConvertWith(const char* charset, std::string_view bytes) {
  const Converter converter(charset);
  if (!converter.valid()) return std::nullopt;
  const std::size_t unit = std::string_view(charset).starts_with("UTF-16") ? 2 : 1;
  Conversion result;
  std::string copy(bytes);  // the converter's interface is not const
  char* in = copy.data();
  std::size_t inLeft = copy.size();
  std::array<char, 4096> buffer;
  while (inLeft > 0) {
    char* out = buffer.data();
    std::size_t outLeft = buffer.size();
    const std::size_t status = iconv(converter.handle(), &in, &inLeft, &out, &outLeft);
    const int error = errno;
    result.text.append(buffer.data(), buffer.size() - outLeft);
    if (status != static_cast<std::size_t>(-1) || error == E2BIG) continue;
    result.text += kReplacement;
    result.damaged = true;
    const std::size_t skipped = error == EINVAL ? inLeft : std::min(unit, inLeft);
    in += skipped;
    inLeft -= skipped;
  }
  return result;
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

std::string_view TrimBlanks(std::string_view text) {
  const std::size_t first = text.find_first_not_of(" \t");
  if (first == std::string_view::npos) return {};
  return text.substr(first, text.find_last_not_of(" \t") - first + 1);
}

bool IsValidUtf8(std::string_view text) {
  while (!text.empty()) {
    const std::size_t length = Utf8SequenceLength(text);
    if (length == 0) return false;
    text.remove_prefix(length);
  }
  return true;
}

std::string RepairUtf8(std::string_view text) {
  std::string repaired;
  repaired.reserve(text.size());
  while (!text.empty()) {
    const std::size_t length = Utf8SequenceLength(text);
    repaired += length == 0 ? kReplacement : text.substr(0, length);
    text.remove_prefix(std::max<std::size_t>(length, 1));
  }
  return repaired;
}

std::string Windows1252ToUtf8(std::string_view bytes) {
  std::string text;
  text.reserve(bytes.size() + bytes.size() / 8);
  for (char c : bytes) {
    const unsigned byte = static_cast<unsigned char>(c);
    AppendUtf8(text, byte >= 0x80 && byte <= 0x9F ? kWindows1252[byte - 0x80] : byte);
  }
  return text;
}

std::optional<Conversion> ConvertToUtf8(std::string_view bytes, std::string_view charset) {
  std::string key;
  for (char c : charset.substr(0, 64)) {
    const char upper = UpperAscii(c);
    if ((upper >= 'A' && upper <= 'Z') || (upper >= '0' && upper <= '9')) key += upper;
  }
  if (key == "UTF8") {
    if (IsValidUtf8(bytes)) return Conversion{std::string(bytes), false};
    return Conversion{RepairUtf8(bytes), true};
  }
  for (const Charset& known : kCharsets) {
    if (known.key != key) continue;
    if (known.converter != nullptr) return ConvertWith(known.converter, bytes);
    return Conversion{Windows1252ToUtf8(bytes), false};
  }
  return std::nullopt;
}

Conversion DecodeFile(std::string_view bytes) {
  if (bytes.starts_with("\xEF\xBB\xBF")) return {std::string(bytes.substr(3)), false};
  const char* charset = nullptr;
  if (bytes.starts_with("\xFF\xFE")) charset = "UTF-16LE";
  if (bytes.starts_with("\xFE\xFF")) charset = "UTF-16BE";
  if (charset != nullptr) {
    if (std::optional<Conversion> text = ConvertWith(charset, bytes.substr(2))) return *text;
  }
  return {std::string(bytes), false};
}

std::string Excerpt(std::string_view text) {
  constexpr std::size_t kLongest = 60;
  std::size_t length = std::min(text.size(), kLongest);
  while (length > 0 && length < text.size() && (text[length] & 0xC0) == 0x80) --length;
  std::string excerpt(text.substr(0, length));
  for (char& c : excerpt) {
    if (static_cast<unsigned char>(c) < 0x20 || c == 0x7F) c = ' ';
  }
  if (length < text.size()) excerpt += "…";
  return excerpt;
}

std::string OnOneLine(std::string_view text) {
  std::string line(TrimBlanks(text));
  for (char& c : line) {
    if (static_cast<unsigned char>(c) < 0x20 || c == 0x7F) c = ' ';
  }
  return std::string(TrimBlanks(line));
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

}  // namespace formats
