// Looks through a document's markup before the parser sees it.
#pragma once

#include <span>

#include "handheld/dom/byte_source.h"

namespace ce::host::dom {

// Attributes and namespace declarations of one element: the parser compares each of them with every
// other before it reports any.
inline constexpr int kMaxAttributes = 1024;

// False when an element has more than kMaxAttributes, or when there is a document type. True and
// false mean nothing beyond the first place where the document is ill-formed.
[[nodiscard]] bool MarkupIsBounded(std::span<const BYTE> document, ByteLayout layout);

}  // namespace ce::host::dom
