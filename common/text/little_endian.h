// Integers as bytes, the lowest first, whatever the computer's own order: words of 32 bits and half
// words of 16.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>

namespace text {

// What lies beyond 16 bits is cut off.
inline void PutHalfWord(std::string& to, std::uint64_t value) {
  to.push_back(static_cast<char>(value & 0xFF));
  to.push_back(static_cast<char>(value >> 8 & 0xFF));
}

inline void PutWord(std::string& to, std::uint32_t value) {
  PutHalfWord(to, value);
  PutHalfWord(to, value >> 16);
}

// The bytes at the offset must exist.
inline std::uint16_t HalfWordAt(std::string_view bytes, std::size_t offset) {
  const auto byte = [&](std::size_t at) { return static_cast<unsigned char>(bytes[at]); };
  return static_cast<std::uint16_t>(byte(offset) | byte(offset + 1) << 8);
}

inline std::uint32_t WordAt(std::string_view bytes, std::size_t offset) {
  return HalfWordAt(bytes, offset) | std::uint32_t{HalfWordAt(bytes, offset + 2)} << 16;
}

}  // namespace text
