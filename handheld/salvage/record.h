// A row or an index's entry as it lies in a database's file:
// https://www.sqlite.org/fileformat2.html, section 2.1.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

namespace ce::host {

// What a value is, as its row says in front. 0 is NULL, up to 6 and 8, 9 are integers, 7 is a
// number with a fraction; from 12 on the even ones are bytes, the odd ones text.
using SerialType = std::uint64_t;

struct RecordValue {
  SerialType type = 0;
  std::int64_t integer = 0;
  double real = 0;
  std::string_view bytes;  // of text and bytes
};

inline bool IsInteger(SerialType type) {
  return (type >= 1 && type <= 6) || type == 8 || type == 9;
}
inline bool IsText(SerialType type) {
  return type >= 12 && type % 2 == 1;
}
inline bool IsBytes(SerialType type) {
  return type >= 12 && type % 2 == 0;
}

// Reads what the values of a record of `size` bytes are, which begins with `start`. False when that
// is none: they would not fill it.
bool ReadTypes(std::string_view start, std::size_t size, std::vector<SerialType>& types);

// Reads a record. Its text and bytes stay where they are.
bool ReadValues(std::string_view record, std::vector<RecordValue>& values);

}  // namespace ce::host
