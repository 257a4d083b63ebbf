#include "handheld/salvage/table_scan.h"

#include <algorithm>

#include "handheld/store/store_schema.h"
#include "platform/status.h"

namespace ce::host {
namespace {

// No tree of the database is deeper.
constexpr int kDeepest = 20;
// The numbers that rows can have: above the first.
constexpr Numbers kAll = {0, kLastOid};

bool Fits(SerialType type, const ColumnShape& column) {
  if (type == 0) return column.mayBeNull;
  switch (column.kind) {
    case ColumnKind::kNumber:
      return false;
    case ColumnKind::kInteger:
      return IsInteger(type);
    case ColumnKind::kReal:
      return IsInteger(type) || type == 7;
    case ColumnKind::kText:
      return IsText(type);
    case ColumnKind::kBytes:
      return IsBytes(type);
  }
  return false;
}

bool Fits(const std::vector<SerialType>& types, const TableShape& shape) {
  return std::equal(types.begin(), types.end(), shape.columns.begin(), shape.columns.end(),
                    [](SerialType type, const ColumnShape& column) { return Fits(type, column); });
}

// Whether there is a row of a table with so many columns.
bool IsRow(const std::optional<PageCell>& cell, std::size_t columns) {
  std::vector<SerialType> types;
  return cell && ReadTypes(cell->start, cell->size, types) && types.size() == columns;
}

// Which of the numbers, each above the first bound and at most the second, ascend: as many as can
// be. A number that a damaged bit has made large does not make those behind it wrong.
std::vector<bool> Ascending(const std::vector<std::int64_t>& numbers, Numbers bounds) {
  constexpr std::size_t kFirst = SIZE_MAX;
  std::vector<std::size_t> ends;  // of the best run of each length, the place of its last number
  std::vector<std::size_t> before(numbers.size(), kFirst);
  for (std::size_t i = 0; i < numbers.size(); ++i) {
    if (numbers[i] <= bounds.first || numbers[i] > bounds.second) continue;
    const auto end = std::lower_bound(
        ends.begin(), ends.end(), numbers[i],
        [&](std::size_t place, std::int64_t number) { return numbers[place] < number; });
    if (end != ends.begin()) before[i] = *(end - 1);
    if (end == ends.end())
      ends.push_back(i);
    else
      *end = i;
  }
  std::vector<bool> ascend(numbers.size());
  for (std::size_t i = ends.empty() ? kFirst : ends.back(); i != kFirst; i = before[i])
    ascend[i] = true;
  return ascend;
}

}  // namespace

HRESULT TableScan::KnowPages() {
  known_.assign(file_.pages() + std::size_t{1}, {});
  for (PageNumber number = 1; number <= file_.pages(); ++number) {
    const DatabasePage* page = nullptr;
    RETURN_IF_FAILED(file_.Read(number, page));
    Known& known = known_[number];
    known.kind = page->kind;
    if (page->kind == PageKind::kOther) continue;
    known.isEmpty = page->isWhole && page->cells.empty() && !page->IsBranch();
    if (page->kind != PageKind::kTableBranch)
      known.shape = static_cast<std::int16_t>(ShapeOf(*page));
    if (!page->IsBranch()) continue;
    std::vector<PageNumber>& children = children_[number];
    for (const auto& cell : page->cells) {
      if (cell && file_.Has(cell->child)) children.push_back(cell->child);
    }
    if (file_.Has(page->lastChild)) children.push_back(page->lastChild);
  }
  for (const auto& [branch, children] : children_) {
    const int shape = ShapeOfBranch(branch, 0);
    for (const PageNumber child : children) {
      if (shape != kNone && known_[child].shape == shape && child != branch)
        known_[child].isChild = true;
    }
  }
  return S_OK;
}

// That whose rows most of the page's are.
int TableScan::ShapeOf(const DatabasePage& page) const {
  std::vector<std::size_t> rows(shapes_.size());
  std::vector<SerialType> types;
  for (const auto& cell : page.cells) {
    if (!cell || !ReadTypes(cell->start, cell->size, types)) continue;
    for (std::size_t i = 0; i < shapes_.size(); ++i) {
      if (shapes_[i].hasNumbers == page.IsTable() && Fits(types, shapes_[i])) ++rows[i];
    }
  }
  const auto most = std::max_element(rows.begin(), rows.end());
  return most == rows.end() || *most == 0 ? kNone : static_cast<int>(most - rows.begin());
}

// That of most pages that it leads to.
int TableScan::ShapeOfBranch(PageNumber branch, int depth) {
  Known& known = known_[branch];
  if (known.kind != PageKind::kTableBranch || known.isVisited || depth > kDeepest)
    return known.shape;
  known.isVisited = true;
  std::map<int, std::size_t> pages;
  for (const PageNumber child : children_[branch]) {
    const int shape = ShapeOfBranch(child, depth + 1);
    if (shape != kNone) ++pages[shape];
  }
  const auto most = std::max_element(
      pages.begin(), pages.end(), [](const auto& a, const auto& b) { return a.second < b.second; });
  if (most != pages.end()) known.shape = static_cast<std::int16_t>(most->first);
  return known.shape;
}

// What is claimed may lie elsewhere. Then it is the only page of the table that nothing leads to.
PageNumber TableScan::RootOf(int shape, PageNumber claimed) const {
  if (file_.Has(claimed) && known_[claimed].shape == shape) return claimed;
  PageNumber root = 0;
  for (const PageNumber number : PagesOf(shape)) {
    if (known_[number].isChild) continue;
    if (root != 0) return 0;
    root = number;
  }
  return root;
}

std::vector<PageNumber> TableScan::PagesOf(int shape) const {
  std::vector<PageNumber> pages;
  for (PageNumber number = 1; number < known_.size(); ++number) {
    if (known_[number].shape == shape) pages.push_back(number);
  }
  return pages;
}

HRESULT TableScan::FindRows(int shape, PageNumber root, TableRows& rows) {
  rows = {};
  for (Known& known : known_) known.isVisited = false;
  rows.root = RootOf(shape, root);
  rows.isWhole = rows.root != 0;
  if (rows.root != 0) RETURN_IF_FAILED(Walk(shape, rows.root, kAll, 0, rows));
  const std::vector<PageNumber> pages = PagesOf(shape);
  const bool visitedAll = std::all_of(pages.begin(), pages.end(),
                                      [&](PageNumber number) { return known_[number].isVisited; });
  if (rows.isWhole && visitedAll) return S_OK;
  // A tree that is whole and not all begins elsewhere.
  if (rows.isWhole) rows.root = 0;
  rows.isWhole = false;
  // What the tree should have led to, or has at another place. Where it is missing is known
  // already.
  rows.others.clear();
  for (const PageNumber number : pages) {
    if (known_[number].kind == PageKind::kTableBranch) continue;
    const DatabasePage* page = nullptr;
    RETURN_IF_FAILED(file_.Read(number, page));
    TakeStrays(shapes_[static_cast<std::size_t>(shape)], number, *page, rows);
  }
  return S_OK;
}

HRESULT TableScan::Walk(int shape, PageNumber number, Numbers bounds, int depth, TableRows& rows) {
  if (!file_.Has(number) || known_[number].shape != shape || known_[number].isVisited ||
      depth > kDeepest) {
    rows.gaps.emplace_back(bounds.first + 1, bounds.second);
    rows.isWhole = false;
    return S_OK;
  }
  known_[number].isVisited = true;
  if (children_.contains(number)) return WalkBranch(shape, number, bounds, depth, rows);
  const DatabasePage* page = nullptr;
  RETURN_IF_FAILED(file_.Read(number, page));
  TakeRows(shape, number, *page, bounds, rows);
  return S_OK;
}

HRESULT TableScan::WalkBranch(int shape, PageNumber number, Numbers bounds, int depth,
                              TableRows& rows) {
  const DatabasePage* page = nullptr;
  RETURN_IF_FAILED(file_.Read(number, page));
  const bool hasNumbers = page->IsTable();
  // An index's branches have rows of their own.
  if (!hasNumbers) TakeRows(shape, number, *page, bounds, rows);
  bool isWhole = page->isWhole;
  std::vector<std::int64_t> last;
  std::vector<PageNumber> children;
  for (const auto& cell : page->cells) {
    if (!cell) continue;
    last.push_back(cell->number);
    children.push_back(cell->child);
  }
  const PageNumber lastChild = page->lastChild;
  const std::vector<bool> ascend = Ascending(last, bounds);
  std::int64_t before = bounds.first;
  for (std::size_t i = 0; i < children.size(); ++i) {
    if (hasNumbers && !ascend[i]) {
      isWhole = false;
      continue;
    }
    RETURN_IF_FAILED(
        Walk(shape, children[i], hasNumbers ? Numbers(before, last[i]) : bounds, depth + 1, rows));
    if (hasNumbers) before = last[i];
  }
  RETURN_IF_FAILED(Walk(shape, lastChild, {before, bounds.second}, depth + 1, rows));
  if (!isWhole) {
    rows.gaps.emplace_back(bounds.first + 1, bounds.second);
    rows.isWhole = false;
  }
  return S_OK;
}

void TableScan::TakeRows(int shape, PageNumber number, const DatabasePage& page, Numbers bounds,
                         TableRows& rows) const {
  const TableShape& table = shapes_[static_cast<std::size_t>(shape)];
  std::vector<std::size_t> cells;
  std::vector<std::int64_t> numbers;
  for (std::size_t i = 0; i < page.cells.size(); ++i) {
    if (!IsRow(page.cells[i], table.columns.size())) continue;
    cells.push_back(i);
    numbers.push_back(page.cells[i]->number);
  }
  bool isWhole = page.isWhole && cells.size() == page.cells.size();
  if (!table.hasNumbers) {
    for (const std::size_t cell : cells) rows.others.push_back({number, cell});
  } else {
    const std::vector<bool> ascend = Ascending(numbers, bounds);
    for (std::size_t i = 0; i < cells.size(); ++i) {
      if (ascend[i])
        rows.numbered.try_emplace(numbers[i], RowPlace{number, cells[i]});
      else
        isWhole = false;
    }
  }
  if (isWhole) return;
  rows.gaps.emplace_back(bounds.first + 1, bounds.second);
  rows.isWhole = false;
}

void TableScan::TakeStrays(const TableShape& table, PageNumber number, const DatabasePage& page,
                           TableRows& rows) {
  for (std::size_t i = 0; i < page.cells.size(); ++i) {
    const auto& cell = page.cells[i];
    if (!IsRow(cell, table.columns.size())) continue;
    if (!table.hasNumbers)
      rows.others.push_back({number, i});
    else if (cell->number > kAll.first && cell->number <= kAll.second)
      rows.numbered.try_emplace(cell->number, RowPlace{number, i});
    else
      rows.hasUnnumbered = true;
  }
}

bool TableScan::IsEmptyTable(PageNumber number, bool hasNumbers) const {
  return file_.Has(number) && known_[number].isEmpty &&
         known_[number].kind == (hasNumbers ? PageKind::kTableLeaf : PageKind::kIndexLeaf);
}

std::size_t TableScan::EmptyTables(bool hasNumbers) const {
  std::size_t tables = 0;
  for (PageNumber number = 1; number < known_.size(); ++number)
    tables += IsEmptyTable(number, hasNumbers) ? 1 : 0;
  return tables;
}

}  // namespace ce::host
