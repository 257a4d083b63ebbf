#include "handheld/system/code_page.h"

#include <iconv.h>

#include <atomic>
#include <cerrno>
#include <string>
#include <unordered_map>
#include <utility>

#include "common/text/utf.h"
#include "handheld/directory/handheld.h"
#include "handheld/system/language.h"
#include "platform/text.h"

namespace ce::host {
namespace {

// The C1 range of code page 1252; 0: the byte stands for the control character of its number.
constexpr char16_t kWestern[32] = {0x20AC, 0,      0x201A, 0x0192, 0x201E, 0x2026, 0x2020, 0x2021,
                                   0x02C6, 0x2030, 0x0160, 0x2039, 0x0152, 0,      0x017D, 0,
                                   0,      0x2018, 0x2019, 0x201C, 0x201D, 0x2022, 0x2013, 0x2014,
                                   0x02DC, 0x2122, 0x0161, 0x203A, 0x0153, 0,      0x017E, 0x0178};

char16_t WesternCharacter(unsigned char byte) {
  if (byte < 0x80 || byte > 0x9F || kWestern[byte - 0x80] == 0) return byte;
  return kWestern[byte - 0x80];
}

// 0 for a character that the page lacks, and for U+0000.
char WesternByte(char16_t unit) {
  if (unit < 0x80 || (unit > 0x9F && unit <= 0xFF)) return static_cast<char>(unit);
  for (unsigned byte = 0x80; byte <= 0x9F; ++byte) {
    if (WesternCharacter(static_cast<unsigned char>(byte)) == unit) return static_cast<char>(byte);
  }
  return 0;
}

bool IsSurrogatePair(std::u16string_view text) {
  return text.size() >= 2 && (text[0] & 0xFC00) == 0xD800 && (text[1] & 0xFC00) == 0xDC00;
}

EncodedText EncodeWestern(std::u16string_view text, char substitute) {
  EncodedText encoded;
  encoded.bytes.reserve(text.size());
  while (!text.empty()) {
    const char byte = WesternByte(text.front());
    const bool missing = byte == 0 && text.front() != 0;
    encoded.bytes.push_back(missing ? substitute : byte);
    encoded.substituted |= missing;
    text.remove_prefix(IsSurrogatePair(text) ? 2 : 1);
  }
  return encoded;
}

std::atomic<std::uint64_t> g_opened{0};

// Open conversions, kept for the thread's next calls: opening one costs far more than a text that
// changes its code page with every character may cost, so none is opened twice.
class Converters {
 public:
  explicit Converters(bool toPage) : toPage_(toPage) {}
  Converters(const Converters&) = delete;
  Converters& operator=(const Converters&) = delete;
  ~Converters() {
    for (const auto& [codePage, handle] : handles_) {
      if (handle != kNone) ::iconv_close(handle);
    }
  }

  // Null when the system knows no such conversion.
  const iconv_t* Open(UINT codePage) {
    if (codePage > kLastCodePage) return nullptr;
    const auto [found, isNew] = handles_.try_emplace(codePage, kNone);
    if (isNew) {
      ++g_opened;
      const std::string name = "CP" + std::to_string(codePage);
      found->second =
          toPage_ ? ::iconv_open(name.c_str(), "UTF-16LE") : ::iconv_open("UTF-16LE", name.c_str());
    }
    if (found->second == kNone) {
      // Another time there may be room for it.
      if (isNew && errno != EINVAL) handles_.erase(found);
      return nullptr;
    }
    ::iconv(found->second, nullptr, nullptr, nullptr, nullptr);
    return &found->second;
  }

 private:
  static constexpr UINT kLastCodePage = 0xFFFF;
  static inline const iconv_t kNone = reinterpret_cast<iconv_t>(-1);

  const bool toPage_;
  std::unordered_map<UINT, iconv_t> handles_;  // kNone for a page that the system does not know
};

// Some pages hold a letter back, for the accent that might follow it.
void AppendHeld(iconv_t handle, std::string& out) {
  char held[16];
  char* to = held;
  std::size_t room = sizeof held;
  ::iconv(handle, nullptr, nullptr, &to, &room);
  out.append(held, static_cast<std::size_t>(to - held));
}

// Converts all of `in`. At what cannot be converted `skip` is called with what is left; it takes
// some of it away and adds what stands for it.
template <typename Skip>
void Convert(iconv_t handle, std::string_view in, std::string& out, Skip&& skip) {
  while (!in.empty()) {
    char buffer[512];
    char* from = const_cast<char*>(in.data());
    std::size_t left = in.size();
    char* to = buffer;
    std::size_t room = sizeof buffer;
    const std::size_t done = ::iconv(handle, &from, &left, &to, &room);
    const int error = errno;
    out.append(buffer, static_cast<std::size_t>(to - buffer));
    in.remove_prefix(in.size() - left);
    if (done == static_cast<std::size_t>(-1) && error != E2BIG && !in.empty()) {
      AppendHeld(handle, out);
      skip(in, out);
    }
  }
  AppendHeld(handle, out);
}

std::u16string UnitsOf(std::string_view bytes) {
  std::u16string text(bytes.size() / 2, u'\0');
  for (std::size_t i = 0; i < text.size(); ++i) {
    text[i] = static_cast<char16_t>(static_cast<BYTE>(bytes[i * 2]) |
                                    static_cast<BYTE>(bytes[i * 2 + 1]) << 8);
  }
  return text;
}

std::string BytesOf(std::u16string_view text) {
  std::string bytes(text.size() * 2, '\0');
  for (std::size_t i = 0; i < text.size(); ++i) {
    bytes[i * 2] = static_cast<char>(text[i] & 0xFF);
    bytes[i * 2 + 1] = static_cast<char>(text[i] >> 8);
  }
  return bytes;
}

std::optional<EncodedText> EncodeByTable(UINT codePage, std::u16string_view text, char substitute) {
  thread_local Converters converters(true);
  const iconv_t* handle = converters.Open(codePage);
  if (!handle) return std::nullopt;
  EncodedText encoded;
  Convert(*handle, BytesOf(text), encoded.bytes, [&](std::string_view& left, std::string& out) {
    const std::u16string next = UnitsOf(left.substr(0, 4));
    left.remove_prefix(IsSurrogatePair(next) ? 4 : 2);
    out.push_back(substitute);
    encoded.substituted = true;
  });
  return encoded;
}

std::optional<std::u16string> DecodeByTable(UINT codePage, std::string_view bytes,
                                            bool& wellFormed) {
  thread_local Converters converters(false);
  const iconv_t* handle = converters.Open(codePage);
  if (!handle) return std::nullopt;
  std::string units;
  Convert(*handle, bytes, units, [&](std::string_view& left, std::string& out) {
    left.remove_prefix(1);
    out += BytesOf(u"\uFFFD");
    wellFormed = false;
  });
  return UnitsOf(units);
}

}  // namespace

std::uint64_t ConversionsOpened() {
  return g_opened;
}

std::optional<EncodedText> EncodeText(UINT codePage, std::u16string_view text, char substitute) {
  if (codePage == CP_UTF8) {
    std::optional<std::string> bytes = ToUtf8(text);
    if (bytes) return EncodedText{*std::move(bytes), false};
    return EncodedText{ToUtf8Lossy(text), true};
  }
  if (codePage == 1252) return EncodeWestern(text, substitute);
  return EncodeByTable(codePage, text, substitute);
}

std::optional<std::u16string> DecodeText(UINT codePage, std::string_view bytes, bool& wellFormed) {
  wellFormed = true;
  if (codePage == CP_UTF8) {
    std::optional<std::u16string> text = FromUtf8(bytes);
    if (text) return text;
    wellFormed = false;
    return FromUtf8Lossy(bytes);
  }
  if (codePage == 1252) {
    std::u16string text;
    for (const char byte : bytes) {
      text.push_back(WesternCharacter(static_cast<unsigned char>(byte)));
    }
    return text;
  }
  return DecodeByTable(codePage, bytes, wellFormed);
}

UINT SystemCodePage() {
  const Handheld* handheld = Handheld::Current();
  if (!handheld) return 1252;
  const DWORD language = handheld->Number(setting::kLanguage, kLangEnglishUs);
  const UINT codePage = CodePageOf(static_cast<LANGID>(language));
  return codePage == 0 ? CP_UTF8 : codePage;
}

}  // namespace ce::host
