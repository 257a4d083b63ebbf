#include "handheld/salvage/fresh_store.h"

#include <sqlite3.h>

#include <algorithm>

#include "handheld/base/fault.h"
#include "handheld/store/store_error.h"
#include "handheld/store/store_schema.h"
#include "platform/status.h"

namespace ce::host {
namespace {

std::string TextOf(sqlite3_stmt* row, int column) {
  const auto* text = reinterpret_cast<const char*>(sqlite3_column_text(row, column));
  return text ? text : "";
}

ColumnKind KindOf(const std::string& type) {
  if (type == "INTEGER") return ColumnKind::kInteger;
  if (type == "REAL") return ColumnKind::kReal;
  return type == "BLOB" ? ColumnKind::kBytes : ColumnKind::kText;
}

int Bind(sqlite3_stmt* statement, int place, const RecordValue& value) {
  const char* bytes = value.bytes.data();
  const sqlite3_uint64 size = value.bytes.size();
  if (IsInteger(value.type)) return sqlite3_bind_int64(statement, place, value.integer);
  if (IsText(value.type))
    return sqlite3_bind_text64(statement, place, bytes, size, SQLITE_STATIC, SQLITE_UTF8);
  if (IsBytes(value.type)) return sqlite3_bind_blob64(statement, place, bytes, size, SQLITE_STATIC);
  if (value.type == 0) return sqlite3_bind_null(statement, place);
  return sqlite3_bind_double(statement, place, value.real);
}

}  // namespace

void FreshStore::Close::operator()(sqlite3* database) const {
  sqlite3_close(database);
}
void FreshStore::Finalize::operator()(sqlite3_stmt* statement) const {
  sqlite3_finalize(statement);
}
FreshStore::FreshStore() = default;
FreshStore::~FreshStore() = default;

HRESULT FreshStore::Make(const std::filesystem::path& path, std::string& problem) {
  sqlite3* opened = nullptr;
  const int flags =
      SQLITE_OPEN_READWRITE | SQLITE_OPEN_CREATE | SQLITE_OPEN_NOMUTEX | SQLITE_OPEN_EXRESCODE;
  const int result = sqlite3_open_v2(path.c_str(), &opened, flags, nullptr);
  database_.reset(opened);
  RETURN_IF_FAILED(StoreStatus(result));
  // Nobody else knows the new file, which is of no use until it is finished.
  RETURN_IF_FAILED(Execute("PRAGMA journal_mode = MEMORY"));
  RETURN_IF_FAILED(Execute("PRAGMA synchronous = FULL"));
  RETURN_IF_FAILED(Execute("PRAGMA temp_store = MEMORY"));
  RETURN_IF_FAILED(BringUpToDate(opened, true, 1, problem));
  return Execute("BEGIN");
}

HRESULT FreshStore::Finish() {
  insert_.reset();
  return Execute("COMMIT");
}

HRESULT FreshStore::Prepare(const std::string& sql, Statement& statement) {
  sqlite3_stmt* prepared = nullptr;
  const int result = sqlite3_prepare_v2(database_.get(), sql.c_str(), -1, &prepared, nullptr);
  statement.reset(prepared);
  return StoreStatus(result);
}

template <typename Visit>
HRESULT FreshStore::ForEach(const std::string& sql, Visit&& visit) {
  Statement statement;
  RETURN_IF_FAILED(Prepare(sql, statement));
  for (;;) {
    RETURN_IF_FAILED(FaultStatus("sqlite3_step:salvage"));
    const int result = sqlite3_step(statement.get());
    if (result != SQLITE_ROW) return StoreStatus(result);
    visit(statement.get());
  }
}

HRESULT FreshStore::ReadShapes(std::vector<TableShape>& shapes) {
  shapes.clear();
  RETURN_IF_FAILED(
      ForEach("SELECT name, sql LIKE '%WITHOUT ROWID' FROM sqlite_schema WHERE type = 'table'",
              [&](sqlite3_stmt* row) {
                shapes.push_back({TextOf(row, 0), sqlite3_column_int(row, 1) == 0, {}});
              }));
  for (TableShape& table : shapes) {
    int keys = 0;
    RETURN_IF_FAILED(ForEach(
        "SELECT type, \"notnull\", pk FROM pragma_table_info('" + table.name + "')",
        [&](sqlite3_stmt* row) {
          const bool isKey = sqlite3_column_int(row, 2) > 0;
          keys += isKey ? 1 : 0;
          table.columns.push_back({KindOf(TextOf(row, 0)), sqlite3_column_int(row, 1) == 0});
        }));
    if (table.name == "sqlite_sequence") table.columns.back().kind = ColumnKind::kInteger;
    // The key of one column is the row's number.
    if (table.hasNumbers && keys == 1) table.columns.front() = {ColumnKind::kNumber, true};
  }
  return S_OK;
}

HRESULT FreshStore::ReadSchema(std::set<std::string>& schema) {
  return ForEach("SELECT sql FROM sqlite_schema WHERE sql IS NOT NULL",
                 [&](sqlite3_stmt* row) { schema.insert(TextOf(row, 0)); });
}

HRESULT FreshStore::SetAside(const std::string& table) {
  RETURN_IF_FAILED(Execute("CREATE TEMP TABLE new_" + table + " AS SELECT * FROM main." + table));
  return Execute("DELETE FROM " + table);
}

HRESULT FreshStore::GiveBack(const std::string& table) {
  return Execute("INSERT OR IGNORE INTO " + table + " SELECT * FROM new_" + table);
}

HRESULT FreshStore::Execute(const std::string& sql, std::int64_t number) {
  Statement statement;
  RETURN_IF_FAILED(Prepare(sql, statement));
  if (sqlite3_bind_parameter_count(statement.get()) > 0)
    sqlite3_bind_int64(statement.get(), 1, number);
  RETURN_IF_FAILED(FaultStatus("sqlite3_step:salvage"));
  return StoreStatus(sqlite3_step(statement.get()));
}

HRESULT FreshStore::ReadNumbers(const std::string& sql, std::vector<std::int64_t>& numbers) {
  numbers.clear();
  return ForEach(sql, [&](sqlite3_stmt* row) { numbers.push_back(sqlite3_column_int64(row, 0)); });
}

HRESULT FreshStore::Insert(const TableShape& table, const std::vector<RecordValue>& values,
                           std::int64_t number, bool& isSaved) {
  if (insertTable_ != table.name) {
    std::string places = "?";
    for (std::size_t i = 1; i < table.columns.size(); ++i) places += ",?";
    RETURN_IF_FAILED(Prepare("INSERT INTO " + table.name + " VALUES (" + places + ")", insert_));
    insertTable_ = table.name;
  }
  sqlite3_reset(insert_.get());
  int result = SQLITE_OK;
  for (std::size_t i = 0; i < values.size() && result == SQLITE_OK; ++i) {
    const int place = static_cast<int>(i) + 1;
    result = table.columns[i].kind == ColumnKind::kNumber
                 ? sqlite3_bind_int64(insert_.get(), place, number)
                 : Bind(insert_.get(), place, values[i]);
  }
  RETURN_IF_FAILED(StoreStatus(result));
  RETURN_IF_FAILED(FaultStatus("sqlite3_step:salvage"));
  result = sqlite3_step(insert_.get());
  isSaved = result == SQLITE_DONE;
  return (result & 0xFF) == SQLITE_CONSTRAINT ? S_OK : StoreStatus(result);
}

}  // namespace ce::host
