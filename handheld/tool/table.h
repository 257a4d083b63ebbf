// The cells of the tables that corvane-device prints.
#pragma once

#include <cstddef>
#include <string>
#include <string_view>

#include "handheld/tool/report.h"

namespace tool {

// Padded, or cut with an ellipsis, to so many cells of a terminal; on one line,
// with a blank for a control character.
std::string Column(std::string_view text, std::size_t width);

// What stands above others, which stands out where the report may show it. Our own words, or such
// as a terminal may get.
std::string Heading(std::string_view words, const Report& report);

// "1 contact", "2,000 contacts".
std::string Counted(std::size_t count, std::string_view name);

}  // namespace tool
