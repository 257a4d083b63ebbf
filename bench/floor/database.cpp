#include "bench/floor/database.h"

#include <sqlite3.h>

#include <stdexcept>

namespace floors {
namespace {

void Check(sqlite3* database, int result) {
  if (result != SQLITE_OK && result != SQLITE_ROW && result != SQLITE_DONE)
    throw std::runtime_error(std::string("the store: ") + sqlite3_errmsg(database));
}

}  // namespace

Database::Database(const std::string& path) {
  Check(database_, sqlite3_open_v2(path.c_str(), &database_,
                                   SQLITE_OPEN_READWRITE | SQLITE_OPEN_NOMUTEX, nullptr));
  Run("PRAGMA journal_mode = WAL;"
      "PRAGMA synchronous = FULL;"
      "PRAGMA foreign_keys = ON;"
      "PRAGMA cache_size = -4096;"
      "PRAGMA journal_size_limit = 4194304;");
}

Database::~Database() {
  sqlite3_close(database_);
}

void Database::Run(const char* sql) {
  Check(database_, sqlite3_exec(database_, sql, nullptr, nullptr, nullptr));
}

Query::Query(const Database& database, const std::string& sql) {
  Check(database.get(), sqlite3_prepare_v3(database.get(), sql.c_str(), -1,
                                           SQLITE_PREPARE_PERSISTENT, &statement_, nullptr));
}

Query::~Query() {
  sqlite3_finalize(statement_);
}

void Query::Bind(int parameter, std::string_view text) {
  const char* bytes = text.data() ? text.data() : "";  // a null pointer would bind NULL
  sqlite3_bind_text64(statement_, parameter, bytes, text.size(), SQLITE_STATIC, SQLITE_UTF8);
}

void Query::Bind(int parameter, std::int64_t number) {
  sqlite3_bind_int64(statement_, parameter, number);
}

void Query::Bind(int parameter, double number) {
  sqlite3_bind_double(statement_, parameter, number);
}

void Query::BindNull(int parameter) {
  sqlite3_bind_null(statement_, parameter);
}

bool Query::Step() {
  const int result = sqlite3_step(statement_);
  Check(sqlite3_db_handle(statement_), result);
  return result == SQLITE_ROW;
}

void Query::Reset() {
  sqlite3_reset(statement_);
}

void Query::Run() {
  Step();
  Reset();
}

bool Query::IsNull(int column) const {
  return sqlite3_column_type(statement_, column) == SQLITE_NULL;
}

std::int64_t Query::Integer(int column) const {
  return sqlite3_column_int64(statement_, column);
}

double Query::Real(int column) const {
  return sqlite3_column_double(statement_, column);
}

std::string_view Query::Text(int column) const {
  const auto* text = static_cast<const char*>(sqlite3_column_blob(statement_, column));
  return text ? std::string_view(text,
                                 static_cast<std::size_t>(sqlite3_column_bytes(statement_, column)))
              : std::string_view();
}

}  // namespace floors
