// The bytes of a document as the parser reads them: a declaration in upper case reads as one in
// lower case.
#pragma once

#include <array>
#include <span>
#include <string>
#include <string_view>

#include "platform/types.h"

namespace ce::host::dom {

// Where the ASCII characters of a document lie in its bytes.
struct ByteLayout {
  std::size_t width = 1;  // bytes of a character
  std::size_t low = 0;    // which of them is the ASCII one; the other is 0
};

// Whether text in the encoding of this name (in any case) has its ASCII characters, and nothing
// else, where `layout` says: the markup can then be found without decoding. True for ASCII, UTF-8
// and UTF-16, and for all of ISO 8859, Windows 125x and KOI8.
[[nodiscard]] bool KeepsAscii(std::string_view encoding, ByteLayout layout);

class ByteSource {
 public:
  explicit ByteSource(std::span<const BYTE> document);  // borrowed

  // The target of the declaration as written ("xml", "XML"), empty without one.
  const std::u16string& declaration() const { return declaration_; }
  ByteLayout layout() const { return layout_; }
  // Copies up to `bytes` of what is left; returns how many, 0 at the end.
  int Read(char* buffer, int bytes);
  bool atEnd() const { return read_ == document_.size(); }

 private:
  void FindDeclaration();

  const std::span<const BYTE> document_;
  std::array<BYTE, 16> head_{};  // the first bytes, corrected
  std::size_t headSize_ = 0;
  std::size_t read_ = 0;
  ByteLayout layout_;
  std::u16string declaration_;
};

}  // namespace ce::host::dom
