// Reads a document from its bytes.
#pragma once

#include <span>

#include "handheld/dom/document.h"

namespace ce::host::dom {

inline constexpr int kMaxDepth = 256;        // nested elements
inline constexpr int kMaxNamespaces = 1024;  // declared around one place
inline constexpr std::size_t kLongName = 200;
// What the tree may take as it lies on its tape.
inline constexpr std::size_t kMaxTreeBytes = std::size_t{1} << 30;

// What a load has taken.
struct LoadWork {
  std::size_t mostNames = 0;  // that were looked through at a time
};

// Gives the empty `document` what the bytes hold, or on failure nothing (E_FAIL when ill-formed or
// beyond a bound, E_OUTOFMEMORY). A document with a document type is refused, so
// that nothing but the bytes is read and nothing in them is expanded but character references and
// the predefined entities. Comments, instructions and CDATA sections become nodes; the declaration
// becomes an instruction that says UTF-8, the encoding in which the document will be saved.
// Namespace declarations come before the other attributes; a prefix need not be declared.
// The encodings are those that KeepsAscii knows; no element has more than kMaxAttributes attributes
// and namespace declarations. A prefix and name of kLongName bytes may not be open where the names
// of elements and attributes become too many for one table (ParserNames). May run on several
// threads at once, each with its own document.
[[nodiscard]] HRESULT Load(Document& document, std::span<const BYTE> bytes, bool preserveWhiteSpace,
                           std::size_t maxTreeBytes = kMaxTreeBytes,
                           LoadWork* work = nullptr) noexcept;

}  // namespace ce::host::dom
