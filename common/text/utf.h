// UTF-8 and UTF-16, and the letter case that names are compared in.
#pragma once

#include <optional>
#include <string>
#include <string_view>

namespace ce::host {

// Nothing when the text is ill-formed: a surrogate without its partner, an overlong or cut
// sequence.
std::optional<std::string> ToUtf8(std::u16string_view text);
std::optional<std::u16string> FromUtf8(std::string_view text);

// As above, with U+FFFD for each ill-formed unit or byte.
std::string ToUtf8Lossy(std::u16string_view text);
std::u16string FromUtf8Lossy(std::string_view text);

// The text as names are compared: each unit's upper case where that is one unit and maps back.
std::u16string Fold(std::u16string_view text);

}  // namespace ce::host
