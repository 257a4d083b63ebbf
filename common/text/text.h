// Text in ASCII, or in UTF-8 where that makes no difference.
#pragma once

#include <string>
#include <string_view>

namespace text {

// ASCII letters only; other bytes compare as they are.
bool EqualsNoCase(std::string_view a, std::string_view b);
bool StartsWithNoCase(std::string_view text, std::string_view prefix);
std::string ToUpperAscii(std::string_view text);
// Without blanks and tabs at both ends.
std::string_view TrimBlanks(std::string_view text);

// At most 60 bytes of valid UTF-8, on one line, for a message; "…" stands for what was cut off.
std::string Excerpt(std::string_view text);

// Without blanks at both ends; a control character, a line break too, becomes a blank.
std::string OnOneLine(std::string_view text);

// Every CR LF and CR becomes LF.
std::string NormalizeLineBreaks(std::string text);

}  // namespace text
