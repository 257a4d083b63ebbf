// The wire's integers: little-endian, whatever the computer's own order.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>

namespace desktop {

inline void PutWord(std::string& to, std::uint32_t value) {
  for (int shift = 0; shift < 32; shift += 8) to.push_back(static_cast<char>(value >> shift));
}

inline void PutHalfWord(std::string& to, unsigned value) {
  to.push_back(static_cast<char>(value & 0xFF));
  to.push_back(static_cast<char>(value >> 8 & 0xFF));
}

// The bytes at the offset must exist.
inline std::uint32_t WordAt(std::string_view bytes, std::size_t offset) {
  std::uint32_t value = 0;
  for (std::size_t i = 4; i-- > 0;)
    value = value << 8 | static_cast<unsigned char>(bytes[offset + i]);
  return value;
}

inline unsigned HalfWordAt(std::string_view bytes, std::size_t offset) {
  return static_cast<unsigned char>(bytes[offset]) |
         static_cast<unsigned>(static_cast<unsigned char>(bytes[offset + 1])) << 8;
}

}  // namespace desktop
