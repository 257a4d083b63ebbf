// SQLite as a floor needs it: the store's settings, and statements prepared once. Throws
// std::runtime_error for whatever goes wrong.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>

struct sqlite3;
struct sqlite3_stmt;

namespace floors {

class Database {
 public:
  // With the settings that the handheld opens its store with.
  explicit Database(const std::string& path);
  Database(const Database&) = delete;
  Database& operator=(const Database&) = delete;
  ~Database();

  void Run(const char* sql);
  sqlite3* get() const { return database_; }

 private:
  sqlite3* database_ = nullptr;
};

// Parameters count from 1, columns from 0. Bound text is borrowed until the next Reset; column
// views until the next Step.
class Query {
 public:
  Query(const Database& database, const std::string& sql);
  Query(const Query&) = delete;
  Query& operator=(const Query&) = delete;
  ~Query();

  void Bind(int parameter, std::string_view text);
  void Bind(int parameter, std::int64_t number);
  void Bind(int parameter, double number);
  void BindNull(int parameter);

  bool Step();  // whether there is a row
  void Reset();
  void Run();  // of a statement without rows: steps and resets

  bool IsNull(int column) const;
  std::int64_t Integer(int column) const;
  double Real(int column) const;
  std::string_view Text(int column) const;  // or bytes

 private:
  sqlite3_stmt* statement_ = nullptr;
};

}  // namespace floors
