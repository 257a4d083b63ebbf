// Little-endian words as bytes, for what tests send and receive.
#pragma once

#include <stdexcept>
#include <string>
#include <string_view>

#include "common/text/little_endian.h"

namespace corvane::testing {

inline std::string Word(std::uint32_t value) {
  std::string bytes;
  text::PutWord(bytes, value);
  return bytes;
}

inline std::string HalfWord(std::uint64_t value) {
  std::string bytes;
  text::PutHalfWord(bytes, value);
  return bytes;
}

// Throws when the bytes end before the word does.
inline std::uint32_t WordAt(std::string_view bytes, std::size_t offset) {
  if (bytes.size() < 4 || offset > bytes.size() - 4) throw std::out_of_range("no word there");
  return text::WordAt(bytes, offset);
}

}  // namespace corvane::testing
