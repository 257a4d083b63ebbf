// Rich text in its parts: braces, control words and symbols, bytes of text.
#pragma once

#include <string_view>

#include "platform/types.h"

namespace ce::host {

struct RichToken {
  enum class Kind { kOpen, kClose, kWord, kSymbol, kHexByte, kByte, kEnd };
  Kind kind = Kind::kEnd;
  std::string_view word = {};  // a control word's name
  bool hasNumber = false;      // whether a number stood behind it
  INT number = 0;
  char byte = 0;  // the symbol, or the byte of text
};

class RichTokens {
 public:
  // The bytes outlive the reader.
  explicit RichTokens(std::string_view bytes) : rest_(bytes) {}

  // Line breaks between tokens and zero bytes are passed over. kEnd at the end of the bytes.
  RichToken Next();
  // Passes over raw bytes; false when there are fewer.
  bool SkipRaw(std::size_t bytes);

 private:
  RichToken AfterBackslash();
  RichToken ReadWord();
  void ReadNumber(RichToken& token);
  RichToken ReadHexByte();

  std::string_view rest_;
};

}  // namespace ce::host
