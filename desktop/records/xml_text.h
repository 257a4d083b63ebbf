// Text as XML carries it.
#pragma once

#include <string>
#include <string_view>

namespace desktop {

// Escaped for element text. What XML cannot carry is left out (control characters) or replaced by
// U+FFFD (bytes that are not UTF-8); carriage return plus line feed becomes a line feed.
std::string XmlText(std::string_view text);

// Whether XmlText leaves out more of it than a line end's carriage return.
bool HasWhatXmlLeavesOut(std::string_view text);

}  // namespace desktop
