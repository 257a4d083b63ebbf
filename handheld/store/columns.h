// Rows as tables of columns: what binds and loads one, and the lists that their statements need.
#pragma once

#include <span>
#include <string>
#include <variant>
#include <vector>

#include "handheld/store/store.h"
#include "platform/automation.h"

namespace ce::host {

// A column, and the member of `Row` that is kept in it.
template <typename Row>
struct Column {
  const char* name;
  std::variant<DATE Row::*, LONG Row::*, DWORD Row::*, bool Row::*, std::int64_t Row::*,
               std::vector<BYTE> Row::*, std::optional<LONG> Row::*,
               std::optional<std::int64_t> Row::*, std::optional<std::u16string> Row::*,
               std::optional<std::vector<BYTE>> Row::*>
      member;
};

// As its member is bound, but for the bytes of a member that cannot be without a value: there none
// are NULL.
template <typename T>
void BindMember(Statement& statement, int parameter, const T& value) {
  statement.Bind(parameter, value);
}
inline void BindMember(Statement& statement, int parameter, const std::vector<BYTE>& bytes) {
  bytes.empty() ? statement.BindNull(parameter) : statement.Bind(parameter, bytes);
}

// Both answer the parameter or column behind.
template <typename Row>
int BindColumns(Statement& statement, int parameter, std::span<const Column<Row>> columns,
                const Row& row) {
  for (const Column<Row>& column : columns) {
    std::visit([&](auto member) { BindMember(statement, parameter++, row.*member); },
               column.member);
  }
  return parameter;
}

template <typename Row>
int LoadColumns(const Statement& statement, int column, std::span<const Column<Row>> columns,
                Row& row) {
  for (const Column<Row>& each : columns) {
    std::visit([&](auto member) { statement.Load(column++, row.*member); }, each.member);
  }
  return column;
}

using ColumnNames = std::vector<const char*>;

// Appends the names of `rows`, which are columns or whatever has the name of one.
template <typename Rows>
void AppendNames(ColumnNames& names, const Rows& rows) {
  for (const auto& row : rows) names.push_back(row.name);
}

enum class ColumnForm {
  kNames,         // "A", "B"
  kPlaceholders,  // ?2, ?3
  kAssignments,   // "A" = ?2, "B" = ?3
};
// The columns' parameters are numbered from `firstParameter` on.
std::string ColumnList(ColumnForm form, const ColumnNames& columns, int firstParameter);
// `begin` as "INSERT INTO contacts": the columns and their parameters from 1 on follow it.
std::string InsertSql(const char* begin, const ColumnNames& columns);

}  // namespace ce::host
