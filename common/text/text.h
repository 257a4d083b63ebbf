// Text as bytes: ASCII comparisons, UTF-8, and the character sets that address books come in.
#pragma once

#include <optional>
#include <string>
#include <string_view>

namespace formats {

// ASCII letters only; other bytes compare as they are.
bool EqualsNoCase(std::string_view a, std::string_view b);
bool StartsWithNoCase(std::string_view text, std::string_view prefix);
std::string ToUpperAscii(std::string_view text);
// Without blanks and tabs at both ends.
std::string_view TrimBlanks(std::string_view text);

bool IsValidUtf8(std::string_view text);
// Every ill-formed byte becomes U+FFFD.
std::string RepairUtf8(std::string_view text);
std::string Windows1252ToUtf8(std::string_view bytes);

struct Conversion {
  std::string text;      // UTF-8
  bool damaged = false;  // something could not be read and stands as U+FFFD
};
// Null for a character set that is not known. The set's name in any case, with or without hyphens.
std::optional<Conversion> ConvertToUtf8(std::string_view bytes, std::string_view charset);

// A whole file: UTF-16 with a byte-order mark becomes UTF-8, the UTF-8 mark goes; any other bytes
// stay as they are, since their character set may change from one property to the next.
Conversion DecodeFile(std::string_view bytes);

// At most 60 bytes of valid UTF-8, on one line, for a message; "…" stands for what was cut off.
std::string Excerpt(std::string_view text);

// Without blanks at both ends; a control character, a line break too, becomes a blank.
std::string OnOneLine(std::string_view text);

// Every CR LF and CR becomes LF.
std::string NormalizeLineBreaks(std::string text);

}  // namespace formats
