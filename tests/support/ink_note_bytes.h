// Notes as devices wrote them, built byte by byte from the format's tables.
#pragma once

#include <cstdint>
#include <initializer_list>
#include <string>
#include <string_view>
#include <vector>

#include "tests/support/words.h"

namespace corvane::testing {

// Bytes given as numbers.
inline std::string Bytes(std::initializer_list<int> values) {
  std::string bytes;
  for (const int value : values) bytes.push_back(static_cast<char>(value));
  return bytes;
}

inline std::string InkHeader(std::size_t version = 7) {
  return Bytes({0x7B, 0x5C, 0x70, 0x77, 0x69, 0x15, 0x00, 0x00, 0x01, 0x01}) + HalfWord(version) +
         HalfWord(0);
}

// Padded to units of 4 bytes.
inline std::string InkZone(std::size_t type, std::size_t id, std::string data) {
  data.resize((data.size() + 3) / 4 * 4);
  return HalfWord(type) + HalfWord(id) + HalfWord(data.size() / 4) + data;
}

inline std::string InkFonts() {
  std::string data(96, '\0');
  data[4] = 1;
  data[32] = 'A';
  return InkZone(0x00, 0, data);
}

inline std::string InkList(const std::vector<std::size_t>& ids) {
  std::string data(24, '\0');
  for (const std::size_t id : ids) data += HalfWord(1) + HalfWord(1) + HalfWord(id) + HalfWord(0);
  return InkZone(0x40, 0, data);
}

// `stream` without its end.
inline std::string InkParagraph(std::size_t id, const std::string& stream) {
  const std::string whole = stream + Bytes({0xC4, 0x00});
  std::string head = HalfWord(1) + HalfWord(whole.size()) + HalfWord(1) + HalfWord(0xFFFF);
  head.resize(24);
  head[18] = static_cast<char>(0xFF);
  return InkZone(0x41, id, head + whole);
}

inline std::string InkEnd() {
  return InkZone(0x82, 0, {});
}

// A note of these paragraphs, listed in their order.
inline std::string InkNote(const std::vector<std::string>& streams) {
  std::vector<std::size_t> ids;
  std::string zones;
  for (const std::string& stream : streams) {
    ids.push_back(ids.size() + 5);
    zones += InkParagraph(ids.back(), stream);
  }
  return InkHeader() + InkFonts() + InkList(ids) + zones + InkEnd();
}

}  // namespace corvane::testing
