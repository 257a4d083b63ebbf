#include "common/text/code_page.h"

#include <iconv.h>

#include <algorithm>
#include <atomic>
#include <cerrno>
#include <iterator>
#include <map>
#include <utility>

#include "common/text/text.h"
#include "common/text/unicode.h"

namespace text {
namespace {

// The C1 range of code page 1252; its five holes stand for the control characters.
constexpr char16_t kWestern[32] = {0x20AC, 0x0081, 0x201A, 0x0192, 0x201E, 0x2026, 0x2020, 0x2021,
                                   0x02C6, 0x2030, 0x0160, 0x2039, 0x0152, 0x008D, 0x017D, 0x008F,
                                   0x0090, 0x2018, 0x2019, 0x201C, 0x201D, 0x2022, 0x2013, 0x2014,
                                   0x02DC, 0x2122, 0x0161, 0x203A, 0x0153, 0x009D, 0x017E, 0x0178};

char16_t WesternCharacter(char c) {
  const auto byte = static_cast<unsigned char>(c);
  return byte >= 0x80 && byte <= 0x9F ? kWestern[byte - 0x80] : byte;
}

// 0 for a character that the page lacks, and for U+0000.
char WesternByte(char32_t character) {
  if (character < 0x80 || (character > 0x9F && character <= 0xFF)) {
    return static_cast<char>(character);
  }
  for (unsigned i = 0; i < std::size(kWestern); ++i) {
    if (kWestern[i] == character) return static_cast<char>(0x80 + i);
  }
  return 0;
}

EncodedText EncodeWestern(std::u16string_view text, char substitute) {
  EncodedText encoded;
  encoded.bytes.reserve(text.size());
  while (!text.empty()) {
    const char32_t character = TakeCharacter(text);
    const char byte = WesternByte(character);
    const bool missing = byte == 0 && character != 0;
    encoded.bytes.push_back(missing ? substitute : byte);
    encoded.substituted |= missing;
  }
  return encoded;
}

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
    {"UTF16BE", "UTF-16BE"},      {"UTF16", "UTF-16LE"},
};

constexpr unsigned kLastPage = 0xFFFF;

std::atomic<std::uint64_t> g_opened{0};

// Open conversions, kept for the thread's next calls: opening one costs far more than a text that
// changes its code page with every character may cost, so none is opened twice.
class Converters {
 public:
  Converters() = default;
  Converters(const Converters&) = delete;
  Converters& operator=(const Converters&) = delete;
  ~Converters() {
    for (const auto& [sets, handle] : handles_) {
      if (handle != kNone) ::iconv_close(handle);
    }
  }

  // Null when the system knows no such conversion. Throws std::bad_alloc: a text read by another
  // set for want of memory would be another text.
  const iconv_t* Open(const std::string& to, const std::string& from) {
    const auto [found, isNew] = handles_.try_emplace({to, from}, kNone);
    if (isNew) {
      ++g_opened;
      // It may say that there is none when memory for it was refused.
      for (int tries = 0; tries < 2 && found->second == kNone; ++tries)
        found->second = ::iconv_open(to.c_str(), from.c_str());
    }
    if (found->second == kNone) {
      // Another time there may be room for it.
      const int error = isNew ? errno : EINVAL;
      if (error != EINVAL) handles_.erase(found);
      if (error == ENOMEM) throw std::bad_alloc();
      return nullptr;
    }
    ::iconv(found->second, nullptr, nullptr, nullptr, nullptr);
    return &found->second;
  }

 private:
  static inline const iconv_t kNone = reinterpret_cast<iconv_t>(-1);

  // kNone for what the system does not know.
  std::map<std::pair<std::string, std::string>, iconv_t> handles_;
};
thread_local Converters t_converters;

// Some pages hold a letter back, for the accent that might follow it.
void AppendHeld(iconv_t handle, std::string& out) {
  char held[16];
  char* to = held;
  std::size_t room = sizeof held;
  ::iconv(handle, nullptr, nullptr, &to, &room);
  out.append(held, static_cast<std::size_t>(to - held));
}

// Converts all of `in`. At what cannot be converted `skip` is called with what is left; it takes
// some of it away and adds what stands for it. Nothing when the system knows no such conversion.
template <typename Skip>
std::optional<std::string> Convert(const std::string& toSet, const std::string& fromSet,
                                   std::string_view in, Skip&& skip) {
  const iconv_t* const handle = t_converters.Open(toSet, fromSet);
  if (!handle) return std::nullopt;
  std::string out;
  while (!in.empty()) {
    char buffer[4096];
    char* from = const_cast<char*>(in.data());
    std::size_t left = in.size();
    char* to = buffer;
    std::size_t room = sizeof buffer;
    const std::size_t done = ::iconv(*handle, &from, &left, &to, &room);
    const int error = errno;
    out.append(buffer, static_cast<std::size_t>(to - buffer));
    in.remove_prefix(in.size() - left);
    if (done == static_cast<std::size_t>(-1) && error != E2BIG && !in.empty()) {
      // This set holds nothing back, and would lose its shift.
      if (fromSet != "ISO-2022-JP") AppendHeld(*handle, out);
      skip(in, out, error == EINVAL);
    }
  }
  AppendHeld(*handle, out);
  return out;
}

std::optional<Conversion> Decode(const std::string& set, std::string_view bytes) {
  const std::size_t unit = set.starts_with("UTF-16") ? 2 : 1;
  bool damaged = false;
  std::optional<std::string> text =
      Convert("UTF-8", set, bytes, [&](std::string_view& left, std::string& out, bool isCutOff) {
        left.remove_prefix(isCutOff ? left.size() : std::min(unit, left.size()));
        out += kReplacementUtf8;
        damaged = true;
      });
  if (!text) return std::nullopt;
  return Conversion{*std::move(text), damaged};
}

// Null without one. An open conversion from "UTF-16" would keep the order of its first text.
const char* TakeByteOrderMark(std::string_view& bytes) {
  const char* const set = bytes.starts_with("\xFF\xFE")   ? "UTF-16LE"
                          : bytes.starts_with("\xFE\xFF") ? "UTF-16BE"
                                                          : nullptr;
  if (set != nullptr) bytes.remove_prefix(2);
  return set;
}

std::optional<EncodedText> Encode(const std::string& set, std::u16string_view text,
                                  char substitute) {
  bool substituted = false;
  std::optional<std::string> bytes = Convert(
      set, "UTF-16LE", ToUtf16Le(text), [&](std::string_view& left, std::string& out, bool) {
        const std::u16string next = FromUtf16Le(left.substr(0, 4));
        std::u16string_view rest = next;
        TakeCharacter(rest);
        left.remove_prefix((next.size() - rest.size()) * 2);
        out.push_back(substitute);
        substituted = true;
      });
  if (!bytes) return std::nullopt;
  return EncodedText{*std::move(bytes), substituted};
}

std::string PageName(unsigned codePage) {
  return "CP" + std::to_string(codePage);
}

}  // namespace

std::uint64_t ConversionsOpened() {
  return g_opened;
}

std::optional<EncodedText> EncodeText(unsigned codePage, std::u16string_view text,
                                      char substitute) {
  if (codePage == kUtf8Page) {
    std::optional<std::string> bytes = ToUtf8(text);
    if (bytes) return EncodedText{*std::move(bytes), false};
    return EncodedText{ToUtf8Lossy(text), true};
  }
  if (codePage == kWesternPage) return EncodeWestern(text, substitute);
  if (codePage > kLastPage) return std::nullopt;
  return Encode(PageName(codePage), text, substitute);
}

std::optional<std::u16string> DecodeText(unsigned codePage, std::string_view bytes,
                                         bool& wellFormed) {
  wellFormed = true;
  std::u16string text;
  if (codePage == kUtf8Page) {
    wellFormed = AppendFromUtf8(text, bytes);
  } else if (codePage == kWesternPage) {
    std::transform(bytes.begin(), bytes.end(), std::back_inserter(text), WesternCharacter);
  } else {
    if (codePage > kLastPage) return std::nullopt;
    const std::optional<Conversion> decoded = Decode(PageName(codePage), bytes);
    if (!decoded) return std::nullopt;
    wellFormed = !decoded->damaged;
    text = FromUtf8Lossy(decoded->text);
  }
  return text;
}

std::string Windows1252ToUtf8(std::string_view bytes) {
  std::string text;
  text.reserve(bytes.size() + bytes.size() / 8);
  for (const char byte : bytes) AppendUtf8(text, WesternCharacter(byte));
  return text;
}

std::optional<Conversion> ConvertToUtf8(std::string_view bytes, std::string_view charset) {
  std::string key;
  for (const char c : ToUpperAscii(charset.substr(0, 64))) {
    if ((c >= 'A' && c <= 'Z') || (c >= '0' && c <= '9')) key += c;
  }
  if (key == "UTF8") {
    if (IsValidUtf8(bytes)) return Conversion{std::string(bytes), false};
    return Conversion{RepairUtf8(bytes), true};
  }
  if (key == "UTF16") {
    if (const char* const set = TakeByteOrderMark(bytes)) return Decode(set, bytes);
  }
  for (const Charset& known : kCharsets) {
    if (known.key != key) continue;
    if (known.converter != nullptr) return Decode(known.converter, bytes);
    return Conversion{Windows1252ToUtf8(bytes), false};
  }
  return std::nullopt;
}

Conversion DecodeFile(std::string_view bytes) {
  if (bytes.starts_with("\xEF\xBB\xBF")) return {std::string(bytes.substr(3)), false};
  if (const char* const set = TakeByteOrderMark(bytes)) {
    if (std::optional<Conversion> text = Decode(set, bytes)) return *text;
  }
  return {std::string(bytes), false};
}

}  // namespace text
