// The cells of the tables that corvane-device prints.
#pragma once

#include <cstddef>
#include <string>
#include <string_view>

namespace tool {

// Padded, or cut with an ellipsis, to so many characters of UTF-8; on one line,
// with a blank for a control character.
std::string Column(std::string_view text, std::size_t width);

// "1 contact", "2,000 contacts".
std::string Counted(std::size_t count, std::string_view name);

}  // namespace tool
