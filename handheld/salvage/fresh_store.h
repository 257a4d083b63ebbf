// The new store that takes what is saved of a damaged one.
#pragma once

#include <cstdint>
#include <filesystem>
#include <memory>
#include <set>
#include <string>
#include <vector>

#include "handheld/salvage/record.h"
#include "handheld/salvage/table_scan.h"
#include "platform/types.h"

struct sqlite3;
struct sqlite3_stmt;

namespace ce::host {

class FreshStore {
 public:
  FreshStore();
  ~FreshStore();
  FreshStore(const FreshStore&) = delete;
  FreshStore& operator=(const FreshStore&) = delete;

  // A store like any new one, at a place where nothing is. Of no use until Finish.
  [[nodiscard]] HRESULT Make(const std::filesystem::path& path, std::string& problem);
  [[nodiscard]] HRESULT Finish();

  // What the rows of a store's tables look like.
  [[nodiscard]] HRESULT ReadShapes(std::vector<TableShape>& shapes);
  // The statements that make a store's tables and indexes.
  [[nodiscard]] HRESULT ReadSchema(std::set<std::string>& schema);

  // Takes what a new store has in a table from the start out of it, and gives it back as far as it
  // has none that cannot be beside it.
  [[nodiscard]] HRESULT SetAside(const std::string& table);
  [[nodiscard]] HRESULT GiveBack(const std::string& table);

  // With `number` for ?1, if there is one.
  [[nodiscard]] HRESULT Execute(const std::string& sql, std::int64_t number = 0);
  // The first column of all rows.
  [[nodiscard]] HRESULT ReadNumbers(const std::string& sql, std::vector<std::int64_t>& numbers);

  // Saves a row; `isSaved` says whether the table takes it. A row's number takes the place of the
  // value that stands for it.
  [[nodiscard]] HRESULT Insert(const TableShape& table, const std::vector<RecordValue>& values,
                               std::int64_t number, bool& isSaved);

 private:
  struct Close {
    void operator()(sqlite3* database) const;
  };
  struct Finalize {
    void operator()(sqlite3_stmt* statement) const;
  };
  using Statement = std::unique_ptr<sqlite3_stmt, Finalize>;

  HRESULT Prepare(const std::string& sql, Statement& statement);
  // Calls `visit` with the statement at each row.
  template <typename Visit>
  HRESULT ForEach(const std::string& sql, Visit&& visit);

  std::unique_ptr<sqlite3, Close> database_;
  Statement insert_;
  std::string insertTable_;
};

}  // namespace ce::host
