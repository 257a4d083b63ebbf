#include "handheld/salvage/record.h"

#include <bit>

#include "handheld/salvage/database_page.h"

namespace ce::host {
namespace {

constexpr std::size_t kSizes[] = {0, 1, 2, 3, 4, 6, 8, 8, 0, 0};
constexpr SerialType kReal = 7;

std::size_t SizeOf(SerialType type) {
  return type < std::size(kSizes) ? kSizes[type] : (type - 12) / 2;
}

std::int64_t SignedNumber(std::string_view bytes) {
  std::uint64_t number = BigEndian(bytes);
  const auto bits = static_cast<unsigned>(8 * bytes.size());
  if (bits > 0 && bits < 64 && (number >> (bits - 1) & 1) != 0) number |= ~std::uint64_t{0} << bits;
  return static_cast<std::int64_t>(number);
}

// How many bytes say what the values are, 0 when that is not known.
std::size_t HeadSize(std::string_view start) {
  std::string_view rest = start;
  std::uint64_t size = 0;
  if (!TakeVarint(rest, size) || size > start.size()) return 0;
  return start.size() - rest.size() <= size ? size : 0;
}

}  // namespace

bool ReadTypes(std::string_view start, std::size_t size, std::vector<SerialType>& types) {
  types.clear();
  const std::size_t headSize = HeadSize(start);
  if (headSize == 0) return false;
  std::string_view head = start.substr(0, headSize);
  std::uint64_t ignored = 0;
  TakeVarint(head, ignored);
  std::size_t sum = headSize;
  while (!head.empty()) {
    SerialType type = 0;
    if (!TakeVarint(head, type) || type == 10 || type == 11) return false;
    types.push_back(type);
    sum += SizeOf(type);
    if (sum > size) return false;
  }
  return sum == size;
}

bool ReadValues(std::string_view record, std::vector<RecordValue>& values) {
  values.clear();
  std::vector<SerialType> types;
  if (!ReadTypes(record, record.size(), types)) return false;
  std::string_view rest = record.substr(HeadSize(record));
  for (const SerialType type : types) {
    RecordValue value;
    value.type = type;
    value.bytes = rest.substr(0, SizeOf(type));
    rest.remove_prefix(SizeOf(type));
    if (type == 8 || type == 9)
      value.integer = static_cast<std::int64_t>(type - 8);
    else if (IsInteger(type))
      value.integer = SignedNumber(value.bytes);
    else if (type == kReal)
      value.real = std::bit_cast<double>(BigEndian(value.bytes));
    values.push_back(value);
  }
  return true;
}

}  // namespace ce::host
