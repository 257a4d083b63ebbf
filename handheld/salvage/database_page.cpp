#include "handheld/salvage/database_page.h"

#include <algorithm>

namespace ce::host {
namespace {

constexpr std::size_t kFileHeader = 100;

std::size_t Word(std::string_view page, std::size_t at) {
  return at + 2 <= page.size() ? BigEndian(page.substr(at, 2)) : 0;
}

PageKind KindOf(char type) {
  switch (type) {
    case 2:
      return PageKind::kIndexBranch;
    case 5:
      return PageKind::kTableBranch;
    case 10:
      return PageKind::kIndexLeaf;
    case 13:
      return PageKind::kTableLeaf;
    default:
      return PageKind::kOther;
  }
}

// So much of a record lies in its cell; the rest has pages of its own.
std::size_t SizeInCell(std::size_t size, bool isTable) {
  constexpr std::size_t kLeast = (kPageSize - 12) * 32 / 255 - 23;
  const std::size_t most = isTable ? kPageSize - 35 : (kPageSize - 12) * 64 / 255 - 23;
  if (size <= most) return size;
  const std::size_t local = kLeast + (size - kLeast) % (kPageSize - 4);
  return local <= most ? local : kLeast;
}

// Adds the cell's size to `used`.
std::optional<PageCell> ReadCell(const DatabasePage& page, std::string_view bytes,
                                 std::size_t& used) {
  constexpr std::size_t kLeastSize = 4;
  const std::size_t all = bytes.size();
  PageCell cell;
  if (page.IsBranch()) {
    if (bytes.size() < 4) return std::nullopt;
    cell.child = static_cast<PageNumber>(BigEndian(bytes.substr(0, 4)));
    bytes.remove_prefix(4);
  }
  std::uint64_t size = 0;
  std::uint64_t number = 0;
  const bool hasRecord = page.kind != PageKind::kTableBranch;
  if (hasRecord && (!TakeVarint(bytes, size) || size > UINT32_MAX)) return std::nullopt;
  if (page.IsTable() && !TakeVarint(bytes, number)) return std::nullopt;
  cell.number = static_cast<std::int64_t>(number);
  cell.size = size;
  const std::size_t here = SizeInCell(cell.size, page.IsTable());
  if (here > bytes.size()) return std::nullopt;
  cell.start = bytes.substr(0, here);
  bytes.remove_prefix(here);
  if (here < cell.size) {
    if (bytes.size() < 4) return std::nullopt;
    cell.rest = static_cast<PageNumber>(BigEndian(bytes.substr(0, 4)));
    bytes.remove_prefix(4);
  }
  used += std::max(all - bytes.size(), kLeastSize);
  return cell;
}

// The bytes that the list of a page's free blocks has. More than a page when it goes wrong.
std::size_t FreeBytes(std::string_view page, std::size_t block) {
  std::size_t free = 0;
  while (block != 0 && free <= kPageSize) {
    const std::size_t next = Word(page, block);
    free += Word(page, block + 2);
    if (next != 0 && next <= block) return kPageSize + 1;
    block = next;
  }
  return free;
}

}  // namespace

std::uint64_t BigEndian(std::string_view bytes) {
  std::uint64_t number = 0;
  for (const char byte : bytes) number = number << 8 | static_cast<unsigned char>(byte);
  return number;
}

bool TakeVarint(std::string_view& bytes, std::uint64_t& number) {
  constexpr std::size_t kMost = 9;
  number = 0;
  for (std::size_t i = 0; i < std::min(kMost, bytes.size()); ++i) {
    const auto byte = static_cast<unsigned char>(bytes[i]);
    const bool isLast = i + 1 == kMost;
    number = isLast ? number << 8 | byte : number << 7 | (byte & 0x7F);
    if (!isLast && byte >= 0x80) continue;
    bytes.remove_prefix(i + 1);
    return true;
  }
  return false;
}

DatabasePage ParsePage(std::string_view bytes, bool isFirst) {
  DatabasePage page;
  const std::size_t head = isFirst ? kFileHeader : 0;
  page.kind = KindOf(bytes[head]);
  if (page.kind == PageKind::kOther) return page;
  const std::size_t count = Word(bytes, head + 3);
  const std::size_t content = Word(bytes, head + 5);
  const std::size_t pointers = head + (page.IsBranch() ? 12 : 8);
  const std::size_t gap = pointers + 2 * count;
  if (page.IsBranch())
    page.lastChild = static_cast<PageNumber>(BigEndian(bytes.substr(head + 8, 4)));
  std::size_t used =
      FreeBytes(bytes, Word(bytes, head + 1)) + static_cast<unsigned char>(bytes[head + 7]);
  for (std::size_t i = pointers; i < std::min(gap, kPageSize - 1); i += 2) {
    const std::size_t at = Word(bytes, i);
    page.cells.push_back(at < pointers || at >= kPageSize ? std::nullopt
                                                          : ReadCell(page, bytes.substr(at), used));
  }
  page.isWhole = gap <= content && content + used == kPageSize &&
                 std::all_of(page.cells.begin(), page.cells.end(),
                             [](const auto& cell) { return cell.has_value(); });
  return page;
}

}  // namespace ce::host
