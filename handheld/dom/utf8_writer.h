// Writes UTF-16 text as UTF-8 into a stream, in large pieces.
#pragma once

#include <array>
#include <cstring>
#include <string_view>

#include "platform/com.h"

namespace ce::host::dom {

// Which characters are written as references. Characters that XML cannot carry are left out in any
// case.
enum class Escape {
  kNone,
  kText,       // & < >
  kAttribute,  // and the quote; and TAB, LF and CR, which a reader would turn into blanks
};

class Utf8Writer {
 public:
  explicit Utf8Writer(ISequentialStream* stream) : stream_(stream) {}  // borrowed

  // Text that is as it must be, a piece at most.
  void Written(std::string_view text) {
    std::memcpy(Reserve(text.size()), text.data(), text.size());
    used_ += text.size();
  }
  void Text(std::u16string_view text, Escape escape);
  // Unescaped, with a blank wherever `second` would follow `first`; when both are the same, also
  // after a `first` at the end.
  void TextWithout(std::u16string_view text, char16_t first, char16_t second);

  // Writes what is left. The stream's first failure; after one, nothing more is written.
  [[nodiscard]] HRESULT Finish();

 private:
  static constexpr std::size_t kPiece = 64 * 1024;

  char* Reserve(std::size_t bytes) {
    if (kPiece - used_ < bytes) Flush();
    return buffer_.data() + used_;
  }
  void Flush();

  ISequentialStream* const stream_;
  std::array<char, kPiece> buffer_;
  std::size_t used_ = 0;
  HRESULT status_ = S_OK;
};

}  // namespace ce::host::dom
