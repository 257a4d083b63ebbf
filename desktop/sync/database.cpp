#include "desktop/sync/database.h"

#include <fcntl.h>
#include <fmt/format.h>
#include <sqlite3.h>
#include <unistd.h>

#include <utility>

#include "desktop/wire/error.h"

namespace desktop {

Database::Database(std::filesystem::path path, Open open) : path_(std::move(path)) {
  // An empty file is an empty database; SQLite would make one that others can read.
  if (open == Open::kNew) close(::open(path_.c_str(), O_CREAT | O_CLOEXEC, 0600));
  try {
    const int flags = SQLITE_OPEN_READWRITE | SQLITE_OPEN_NOMUTEX;
    if (sqlite3_open_v2(path_.c_str(), &handle_, flags, nullptr) != SQLITE_OK) Fail();
  } catch (...) {
    sqlite3_close(handle_);
    throw;
  }
}

Database::~Database() {
  sqlite3_close(handle_);
}

void Database::Fail() const {
  const int code = handle_ == nullptr ? SQLITE_NOMEM : sqlite3_errcode(handle_);
  const char* const why = handle_ == nullptr ? sqlite3_errstr(code) : sqlite3_errmsg(handle_);
  throw Error(fmt::format("{}: {}", path_.string(), why));
}

void Database::Run(const std::string& statements) {
  if (sqlite3_exec(handle_, statements.c_str(), nullptr, nullptr, nullptr) != SQLITE_OK) Fail();
}

std::int64_t Database::lastInserted() const {
  return sqlite3_last_insert_rowid(handle_);
}

std::int64_t Database::changes() const {
  return sqlite3_total_changes(handle_);
}

Query::Query(const Database& database, std::string_view text) : database_(database) {
  Check(sqlite3_prepare_v2(database.handle_, text.data(), static_cast<int>(text.size()),
                           &statement_, nullptr));
}

Query::~Query() {
  sqlite3_finalize(statement_);
}

void Query::Check(int result) const {
  if (result != SQLITE_OK) database_.Fail();
}

Query& Query::With(std::int64_t value) {
  Check(sqlite3_bind_int64(statement_, ++parameter_, value));
  return *this;
}

Query& Query::With(std::string_view text) {
  const char* const bytes = text.empty() ? "" : text.data();  // a null pointer would bind NULL
  Check(sqlite3_bind_text64(statement_, ++parameter_, bytes, text.size(), SQLITE_STATIC,
                            SQLITE_UTF8));
  return *this;
}

Query& Query::WithBytes(std::string_view bytes) {
  const char* const begin = bytes.empty() ? "" : bytes.data();
  Check(sqlite3_bind_blob64(statement_, ++parameter_, begin, bytes.size(), SQLITE_STATIC));
  return *this;
}

bool Query::Step() {
  const int result = sqlite3_step(statement_);
  if (result != SQLITE_ROW && result != SQLITE_DONE) database_.Fail();
  return result == SQLITE_ROW;
}

void Query::Run() {
  while (Step()) {
  }
  Check(sqlite3_reset(statement_));
  parameter_ = 0;
}

std::int64_t Query::Number(int column) const {
  return sqlite3_column_int64(statement_, column);
}

std::string Query::Text(int column) const {
  const auto* const bytes = static_cast<const char*>(sqlite3_column_blob(statement_, column));
  const int count = sqlite3_column_bytes(statement_, column);
  return bytes == nullptr ? std::string() : std::string(bytes, static_cast<std::size_t>(count));
}

Transaction::Transaction(Database& database) : database_(database) {
  database_.Run("BEGIN IMMEDIATE");
}

Transaction::~Transaction() {
  if (!open_) return;
  try {
    database_.Run("ROLLBACK");
  } catch (const Error&) {
    // Closing the database rolls back, too.
  }
}

void Transaction::Commit() {
  database_.Run("COMMIT");
  open_ = false;
}

}  // namespace desktop
