#include "tests/support/store_sql.h"

#include <gtest/gtest.h>
#include <sqlite3.h>

#include <sstream>

namespace corvane::testing {

bool RunSql(const ce::host::Handheld& handheld, const std::string& sql) {
  sqlite3* database = nullptr;
  int result = sqlite3_open(handheld.storePath().c_str(), &database);
  if (result == SQLITE_OK) result = sqlite3_exec(database, sql.c_str(), nullptr, nullptr, nullptr);
  sqlite3_close(database);
  return result == SQLITE_OK;
}

std::string QuerySql(const ce::host::Handheld& handheld, const std::string& sql) {
  sqlite3* database = nullptr;
  sqlite3_stmt* statement = nullptr;
  std::string answer;
  if (sqlite3_open(handheld.storePath().c_str(), &database) == SQLITE_OK &&
      sqlite3_prepare_v2(database, sql.c_str(), -1, &statement, nullptr) == SQLITE_OK) {
    while (sqlite3_step(statement) == SQLITE_ROW) {
      const auto* text = reinterpret_cast<const char*>(sqlite3_column_text(statement, 0));
      if (!answer.empty()) answer += ' ';
      answer += text ? text : "NULL";
    }
  }
  sqlite3_finalize(statement);
  sqlite3_close(database);
  return answer;
}

void TakeBackToTheFirstFormat(const ce::host::Handheld& handheld) {
  std::istringstream later(
      QuerySql(handheld,
               "SELECT name FROM sqlite_schema WHERE type = 'table' AND name NOT LIKE 'sqlite%'"
               " AND name NOT IN ('oid_counter', 'contacts', 'import_ledger')"));
  int dropped = 0;
  for (std::string table; later >> table; ++dropped) {
    EXPECT_TRUE(RunSql(handheld, "DROP TABLE " + table)) << table;
  }
  EXPECT_GT(dropped, 0);
  EXPECT_TRUE(RunSql(handheld, "PRAGMA user_version = 1"));
}

}  // namespace corvane::testing
