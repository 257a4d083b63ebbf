// How much room text takes on a terminal.
#pragma once

#include <cstddef>
#include <string>
#include <string_view>

namespace terminal {

// In cells, as terminals reckon: two for an East Asian character and most pictures, none for a mark
// on another character. For text on one line that has nothing to steer a terminal.
std::size_t WidthOf(std::string_view utf8);

// The text, or as much of its beginning as so many cells hold beside an ellipsis. No character is
// parted from its marks.
std::string Cut(std::string_view utf8, std::size_t width);

// Cut, and with blanks behind it to fill the cells.
std::string Fitted(std::string_view utf8, std::size_t width);

}  // namespace terminal
