// Text in ASCII, or in UTF-8 where that makes no difference.
#pragma once

#include <string>
#include <string_view>

namespace text {

// ASCII letters only; other bytes compare as they are.
bool EqualsNoCase(std::string_view a, std::string_view b);
bool StartsWithNoCase(std::string_view text, std::string_view prefix);
std::string ToUpperAscii(std::string_view text);
// An ASCII control character, but no tab.
bool IsControl(char c);
// Without blanks and tabs at both ends.
std::string_view TrimBlanks(std::string_view text);

// As a terminal may get it: a blank for each character that could steer one or turn around the
// order of others (controls but for line feeds, those beyond ASCII too, marks of direction and what
// is not to be seen), U+FFFD for each byte that is no UTF-8.
std::string Shown(std::string_view text);

// At most 60 bytes of the text, Shown on one line, for a message; "…" stands for what was cut off.
std::string Excerpt(std::string_view text);

// Shown, without blanks at both ends; a line break becomes a blank, too.
std::string OnOneLine(std::string_view text);

// Every CR LF and CR becomes LF.
std::string NormalizeLineBreaks(std::string text);

}  // namespace text
