// A store's file that may be damaged in any way: its tables, and where their rows are.
#pragma once

#include <cstdint>
#include <filesystem>
#include <map>
#include <memory>
#include <optional>
#include <set>
#include <string>
#include <vector>

#include "handheld/salvage/database_file.h"
#include "handheld/salvage/record.h"
#include "handheld/salvage/table_scan.h"
#include "platform/types.h"

namespace ce::host {

class DamagedStore {
 public:
  // `shapes` and `schema` are those of a store of this version. What the log beside the file holds
  // is moved into the file. Fails, as when it is a newer store or none, with the reason in
  // `problem`, or none for what the status says.
  [[nodiscard]] HRESULT Open(const std::filesystem::path& path, std::vector<TableShape> shapes,
                             const std::set<std::string>& schema, std::string& problem);

  // Whether all that the log held is there now.
  bool isLogWhole() const { return isLogWhole_; }

  // The shape of a table.
  const TableShape& ShapeOf(const std::string& table) const;
  // The rows of a table. Those of one that an older store lacks are whole, and none.
  [[nodiscard]] HRESULT FindRows(const std::string& table, TableRows& rows);
  // The largest integer that ends a row of a table of counters, 0 for an empty one; nullopt when it
  // cannot be read.
  [[nodiscard]] HRESULT ReadCounter(const std::string& table, std::optional<std::int64_t>& last);
  // False when there is no such row. The values are valid until the next call.
  [[nodiscard]] HRESULT ReadRow(const RowPlace& place, std::vector<RecordValue>& values,
                                bool& isThere);

 private:
  HRESULT MoveLog(const std::filesystem::path& path);
  HRESULT ReadSchema(const std::set<std::string>& known, bool& hasUnknown);
  HRESULT CheckOwner(bool hasUnknown, std::string& problem);
  int IndexOf(const std::string& table) const;
  bool IsKnownToBeEmpty(const std::string& table) const;

  std::vector<TableShape> shapes_;
  DatabaseFile file_;
  std::unique_ptr<TableScan> scan_;
  std::map<std::string, PageNumber> roots_;  // by the schema
  bool isSchemaWhole_ = false;
  bool isLogWhole_ = true;
  std::string record_;
};

}  // namespace ce::host
