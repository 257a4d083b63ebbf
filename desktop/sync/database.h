// A database file of this program alone: what a transaction has changed is in it whole or not at
// all, whenever the process ends. Every failure throws Error, which names the file.
#pragma once

#include <cstdint>
#include <filesystem>
#include <string>
#include <string_view>

struct sqlite3;
struct sqlite3_stmt;

namespace desktop {

class Database {
 public:
  // The file must be there, unless it is to be made, for its owner alone.
  enum class Open { kExisting, kNew };
  Database(std::filesystem::path path, Open open);
  ~Database();
  Database(const Database&) = delete;
  Database& operator=(const Database&) = delete;

  void Run(const std::string& statements);
  [[nodiscard]] std::int64_t lastInserted() const;
  // Rows that were changed since it was opened.
  [[nodiscard]] std::int64_t changes() const;
  [[nodiscard]] const std::filesystem::path& path() const { return path_; }

 private:
  friend class Query;
  [[noreturn]] void Fail() const;

  std::filesystem::path path_;
  sqlite3* handle_ = nullptr;
};

// A statement of the database, which it must not outlive.
class Query {
 public:
  Query(const Database& database, std::string_view text);
  ~Query();
  Query(const Query&) = delete;
  Query& operator=(const Query&) = delete;

  // The next parameter. Texts and bytes are borrowed until Step or Run returns.
  Query& With(std::int64_t value);
  Query& With(std::string_view text);
  Query& WithBytes(std::string_view bytes);

  // False after the last row.
  bool Step();
  // A statement without rows; it can be given other parameters after that.
  void Run();

  // Of the row, counted from 0.
  [[nodiscard]] std::int64_t Number(int column) const;
  [[nodiscard]] std::string Text(int column) const;

 private:
  void Check(int result) const;

  const Database& database_;
  sqlite3_stmt* statement_ = nullptr;
  int parameter_ = 0;
};

// Rolled back unless it is committed.
class Transaction {
 public:
  explicit Transaction(Database& database);
  ~Transaction();
  Transaction(const Transaction&) = delete;
  Transaction& operator=(const Transaction&) = delete;
  // On the disk when it returns.
  void Commit();

 private:
  Database& database_;
  bool open_ = true;
};

}  // namespace desktop
