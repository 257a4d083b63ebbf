// Where elements begin and end in a document's own bytes.
#pragma once

#include <string_view>
#include <vector>

namespace desktop {

// The element children of the root, start tag to end tag. The document must be known to be
// well-formed, without a document type, in an encoding that has ASCII's bytes for ASCII.
std::vector<std::string_view> ChildSpans(std::string_view document);

}  // namespace desktop
