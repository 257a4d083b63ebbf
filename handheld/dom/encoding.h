// The encodings in which a document may come.
#pragma once

#include <string_view>

#include "handheld/dom/byte_source.h"

namespace ce::host::dom {

// Whether text in the encoding of this name (in any case) has its ASCII characters, and nothing
// else, where `layout` says: the markup can then be found without decoding. True for ASCII, UTF-8
// and UTF-16, and for the families ISO 8859, Windows 125x and KOI8.
[[nodiscard]] bool KeepsAscii(std::string_view encoding, ByteLayout layout);

}  // namespace ce::host::dom
