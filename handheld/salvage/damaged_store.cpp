#include "handheld/salvage/damaged_store.h"

#include <sqlite3.h>

#include <algorithm>
#include <system_error>
#include <utility>

#include "handheld/store/store_error.h"
#include "handheld/store/store_schema.h"
#include "platform/status.h"

namespace ce::host {
namespace {

constexpr char kSchemaTable[] = "sqlite_schema";
constexpr PageNumber kSchemaRoot = 1;

bool operator==(const ColumnShape& a, const ColumnShape& b) {
  return a.kind == b.kind && a.mayBeNull == b.mayBeNull;
}

bool LooksLike(const TableShape& a, const TableShape& b) {
  return a.hasNumbers == b.hasNumbers &&
         std::equal(a.columns.begin(), a.columns.end(), b.columns.begin(), b.columns.end(),
                    [](const ColumnShape& x, const ColumnShape& y) { return x == y; });
}

}  // namespace

HRESULT DamagedStore::Open(const std::filesystem::path& path, std::vector<TableShape> shapes,
                           const std::set<std::string>& schema, std::string& problem) {
  RETURN_IF_FAILED(MoveLog(path));
  RETURN_IF_FAILED(file_.Open(path));
  const ColumnShape text = {ColumnKind::kText, false};
  shapes_ = std::move(shapes);
  shapes_.push_back({kSchemaTable,
                     true,
                     {text, text, text, {ColumnKind::kInteger, false}, {ColumnKind::kText, true}}});
  scan_ = std::make_unique<TableScan>(file_, shapes_);
  RETURN_IF_FAILED(scan_->KnowPages());
  bool hasUnknown = false;
  RETURN_IF_FAILED(ReadSchema(schema, hasUnknown));
  RETURN_IF_FAILED(CheckOwner(hasUnknown, problem));
  const bool hasTables = std::any_of(shapes_.begin(), shapes_.end() - 1, [&](const auto& table) {
    return !scan_->PagesOf(IndexOf(table.name)).empty();
  });
  return hasTables ? S_OK : kStoreDamaged;
}

HRESULT DamagedStore::MoveLog(const std::filesystem::path& path) {
  std::filesystem::path log = path;
  log += "-wal";
  std::error_code error;
  if (!std::filesystem::exists(log, error)) return S_OK;
  RETURN_IF_FAILED(MendHeader(path));
  sqlite3* database = nullptr;
  int result =
      sqlite3_open_v2(path.c_str(), &database,
                      SQLITE_OPEN_READWRITE | SQLITE_OPEN_NOMUTEX | SQLITE_OPEN_EXRESCODE, nullptr);
  // The database looks for a log when it is read; this reads none of its tables.
  if (result == SQLITE_OK)
    result = sqlite3_exec(database, "PRAGMA writable_schema = ON; PRAGMA user_version", nullptr,
                          nullptr, nullptr);
  if (result == SQLITE_OK)
    result =
        sqlite3_wal_checkpoint_v2(database, nullptr, SQLITE_CHECKPOINT_TRUNCATE, nullptr, nullptr);
  sqlite3_close(database);
  const HRESULT status = StoreStatus(result);
  isLogWhole_ = status != kStoreDamaged;
  return isLogWhole_ ? status : S_OK;
}

HRESULT DamagedStore::ReadSchema(const std::set<std::string>& known, bool& hasUnknown) {
  TableRows rows;
  RETURN_IF_FAILED(scan_->FindRows(IndexOf(kSchemaTable), kSchemaRoot, rows));
  isSchemaWhole_ = rows.isWhole && rows.root == kSchemaRoot;
  for (const auto& [number, place] : rows.numbered) {
    std::vector<RecordValue> values;
    bool isThere = false;
    RETURN_IF_FAILED(ReadRow(place, values, isThere));
    isSchemaWhole_ = isSchemaWhole_ && isThere;
    if (!isThere) continue;
    if (values[0].bytes == "table")
      roots_[std::string(values[1].bytes)] = static_cast<PageNumber>(values[3].integer);
    if (!values[4].bytes.empty() && !known.contains(std::string(values[4].bytes)))
      hasUnknown = true;
  }
  return S_OK;
}

// A bit that has changed makes a store no other program's, and not newer: that has other tables.
HRESULT DamagedStore::CheckOwner(bool hasUnknown, std::string& problem) {
  constexpr std::size_t kFormatAt = 60;
  constexpr std::size_t kApplicationAt = 68;
  std::uint64_t format = 0;
  std::uint64_t application = 0;
  RETURN_IF_FAILED(file_.ReadHeader(kFormatAt, format));
  RETURN_IF_FAILED(file_.ReadHeader(kApplicationAt, application));
  if (!hasUnknown) return S_OK;
  if (application != kStoreApplicationId) {
    problem = "is another program's database";
    return kStoreDamaged;
  }
  return format > kStoreFormat ? kStoreNewerFormat : S_OK;
}

// Of tables that look alike the first has the pages of all.
int DamagedStore::IndexOf(const std::string& table) const {
  const TableShape& shape = ShapeOf(table);
  return static_cast<int>(
      std::find_if(shapes_.begin(), shapes_.end(),
                   [&](const TableShape& other) { return LooksLike(shape, other); }) -
      shapes_.begin());
}

const TableShape& DamagedStore::ShapeOf(const std::string& table) const {
  return *std::find_if(shapes_.begin(), shapes_.end(),
                       [&](const TableShape& shape) { return shape.name == table; });
}

HRESULT DamagedStore::FindRows(const std::string& table, TableRows& rows) {
  const auto root = roots_.find(table);
  const int index = IndexOf(table);
  RETURN_IF_FAILED(scan_->FindRows(index, root == roots_.end() ? 0 : root->second, rows));
  if (scan_->PagesOf(index).empty()) rows.isWhole = IsKnownToBeEmpty(table);
  return S_OK;
}

bool DamagedStore::IsKnownToBeEmpty(const std::string& table) const {
  const bool hasNumbers = ShapeOf(table).hasNumbers;
  const auto root = roots_.find(table);
  if (root != roots_.end()) return scan_->IsEmptyTable(root->second, hasNumbers);
  if (isSchemaWhole_) return true;
  const auto rowless = std::count_if(shapes_.begin(), shapes_.end() - 1, [&](const auto& other) {
    return other.hasNumbers == hasNumbers && scan_->PagesOf(IndexOf(other.name)).empty();
  });
  return scan_->EmptyTables(hasNumbers) >= static_cast<std::size_t>(rowless);
}

HRESULT DamagedStore::ReadRow(const RowPlace& place, std::vector<RecordValue>& values,
                              bool& isThere) {
  const DatabasePage* page = nullptr;
  RETURN_IF_FAILED(file_.Read(place.page, page));
  RETURN_IF_FAILED(file_.ReadRecord(*page->cells[place.cell], record_));
  isThere = ReadValues(record_, values);
  return S_OK;
}

HRESULT DamagedStore::ReadCounter(const std::string& table, std::optional<std::int64_t>& last) {
  last.reset();
  const int index = IndexOf(table);
  std::vector<PageNumber> pages = scan_->PagesOf(index);
  if (const auto root = roots_.find(table); root != roots_.end()) {
    const bool isThere = std::find(pages.begin(), pages.end(), root->second) != pages.end();
    pages.clear();
    if (isThere) pages.push_back(root->second);
  } else if (isSchemaWhole_) {
    pages.clear();
  }
  if (pages.empty() && IsKnownToBeEmpty(table)) last = 0;
  for (const PageNumber page : pages) {
    TableRows rows;
    RETURN_IF_FAILED(scan_->FindRows(index, page, rows));
    for (const auto& [number, place] : rows.numbered) {
      std::vector<RecordValue> values;
      bool isThere = false;
      RETURN_IF_FAILED(ReadRow(place, values, isThere));
      if (!isThere || values.back().integer < 0 || values.back().integer > kLastOid + 1) continue;
      last = std::max(last.value_or(0), values.back().integer);
    }
  }
  return S_OK;
}

}  // namespace ce::host
