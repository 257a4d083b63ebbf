// A page of a database's file, of which nothing is taken for granted, as
// https://www.sqlite.org/fileformat2.html describes it in its section 1.6.
#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string_view>
#include <vector>

namespace ce::host {

inline constexpr std::size_t kPageSize = 4096;

using PageNumber = std::uint32_t;  // from 1, 0 for none

enum class PageKind { kOther, kIndexBranch, kTableBranch, kIndexLeaf, kTableLeaf };

struct PageCell {
  PageNumber child = 0;     // of a branch: the page with what comes before this cell
  std::int64_t number = 0;  // of a table: the row's; of its branches the last one below `child`
  std::size_t size = 0;     // of the record; a branch of a table has none
  std::string_view start;   // what of the record lies in the page
  PageNumber rest = 0;      // where the rest of the record is
};

struct DatabasePage {
  PageKind kind = PageKind::kOther;
  std::vector<std::optional<PageCell>> cells;  // nullopt where there can be none
  PageNumber lastChild = 0;                    // of a branch
  bool isWhole = false;  // whether each byte belongs to what can be read, or is free

  bool IsTable() const { return kind == PageKind::kTableBranch || kind == PageKind::kTableLeaf; }
  bool IsBranch() const { return kind == PageKind::kTableBranch || kind == PageKind::kIndexBranch; }
};

// `bytes` are a page, and live as long as its cells. On the file's first page the tree begins
// behind the file's header.
DatabasePage ParsePage(std::string_view bytes, bool isFirst);

// The number that the bytes are, the highest first.
std::uint64_t BigEndian(std::string_view bytes);

// Reads a number of one to nine bytes and takes it off the front. False when it is cut off.
bool TakeVarint(std::string_view& bytes, std::uint64_t& number);

}  // namespace ce::host
