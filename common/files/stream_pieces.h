// Files of any length, a piece at a time.
#pragma once

#include <array>
#include <istream>
#include <string_view>

namespace files {

using StreamPiece = std::array<char, 1 << 16>;

// The next bytes, which lie in `piece`; none at the end. A stream that cannot be read ends there,
// and is bad.
std::string_view ReadPiece(std::istream& in, StreamPiece& piece);

}  // namespace files
