// Which pages of a damaged database are a table's, and what rows they have.
#pragma once

#include <cstdint>
#include <map>
#include <string>
#include <utility>
#include <vector>

#include "handheld/salvage/database_file.h"
#include "handheld/salvage/record.h"
#include "platform/types.h"

namespace ce::host {

// kNumber is that of the row, which does not stand among its values.
enum class ColumnKind { kNumber, kInteger, kReal, kText, kBytes };

struct ColumnShape {
  ColumnKind kind = ColumnKind::kText;
  bool mayBeNull = true;
};

// By the number and the kinds of their values the rows of one table are told from those of another,
// so that no page need be known by what leads to it.
struct TableShape {
  std::string name;
  bool hasNumbers = true;  // whether its rows have numbers; else it is all in its key
  std::vector<ColumnShape> columns;
};

struct RowPlace {
  PageNumber page = 0;
  std::size_t cell = 0;
};

using Numbers = std::pair<std::int64_t, std::int64_t>;  // the first and the last

struct TableRows {
  PageNumber root = 0;  // where its tree begins, 0 when that is not known
  std::map<std::int64_t, RowPlace> numbered;
  std::vector<RowPlace> others;  // of a table whose rows have no numbers
  // Where rows may have been that cannot be read, and rows that can. They overlap.
  std::vector<Numbers> gaps;
  bool isWhole = true;         // whether these are all
  bool hasUnnumbered = false;  // whether rows were left that have impossible numbers
};

// Reads a database's file twice: to know the pages, and to find each table's rows, in the order of
// its tree as far as that holds, then those that no tree leads to. Memory: some bytes a page and a
// row.
class TableScan {
 public:
  TableScan(DatabaseFile& file, std::vector<TableShape> shapes)
      : file_(file), shapes_(std::move(shapes)) {}

  [[nodiscard]] HRESULT KnowPages();
  // The rows of the table with this place among the shapes, whose tree is said to begin at `root`,
  // 0 when nothing says so.
  [[nodiscard]] HRESULT FindRows(int shape, PageNumber root, TableRows& rows);

  // The pages with rows of this table, and those that lead to them.
  std::vector<PageNumber> PagesOf(int shape) const;
  // Whether a table without rows is there.
  bool IsEmptyTable(PageNumber number, bool hasNumbers) const;

  // How many tables, or indexes and tables that are all in their keys, have no row.
  std::size_t EmptyTables(bool hasNumbers) const;

 private:
  static constexpr int kNone = -1;
  struct Known {
    PageKind kind = PageKind::kOther;
    std::int16_t shape = kNone;
    bool isChild = false;  // something of its kind leads to it
    bool isEmpty = false;
    bool isVisited = false;
  };

  int ShapeOf(const DatabasePage& page) const;
  int ShapeOfBranch(PageNumber branch, int depth);
  PageNumber RootOf(int shape, PageNumber claimed) const;
  HRESULT Walk(int shape, PageNumber number, Numbers bounds, int depth, TableRows& rows);
  HRESULT WalkBranch(int shape, PageNumber number, Numbers bounds, int depth, TableRows& rows);
  void TakeRows(int shape, PageNumber number, const DatabasePage& page, Numbers bounds,
                TableRows& rows) const;

  static void TakeStrays(const TableShape& table, PageNumber number, const DatabasePage& page,
                         TableRows& rows);

  DatabaseFile& file_;
  const std::vector<TableShape> shapes_;
  std::vector<Known> known_;  // by the page's number
  std::map<PageNumber, std::vector<PageNumber>> children_;
};

}  // namespace ce::host
