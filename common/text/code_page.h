// 8-bit text: in the code pages of a device, and in the character sets that address books come in.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

namespace text {

inline constexpr unsigned kWesternPage = 1252;
inline constexpr unsigned kUtf8Page = 65001;

struct EncodedText {
  std::string bytes;
  bool substituted = false;  // a character was not to be had and became the substitute
};

// Nothing for a code page that is not known.
std::optional<EncodedText> EncodeText(unsigned codePage, std::u16string_view text, char substitute);
// Bytes that stand for nothing become U+FFFD; `wellFormed` tells whether there were any.
std::optional<std::u16string> DecodeText(unsigned codePage, std::string_view bytes,
                                         bool& wellFormed);

struct Conversion {
  std::string text;      // UTF-8
  bool damaged = false;  // something could not be read and stands as U+FFFD
};

std::string Windows1252ToUtf8(std::string_view bytes);
// Null for a character set that is not known. The set's name in any case, with or without hyphens.
std::optional<Conversion> ConvertToUtf8(std::string_view bytes, std::string_view charset);
// A whole file: UTF-16 with a byte-order mark becomes UTF-8, the UTF-8 mark goes; any other bytes
// stay as they are, since their character set may change from one property to the next.
Conversion DecodeFile(std::string_view bytes);

// Conversions that this process has asked the system for. A thread asks once for each set and
// direction, which is dear.
std::uint64_t ConversionsOpened();

}  // namespace text
