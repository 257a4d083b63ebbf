#include "handheld/store/columns.h"

namespace ce::host {

std::string ColumnList(ColumnForm form, const ColumnNames& columns, int firstParameter) {
  std::string list;
  int parameter = firstParameter;
  for (const char* column : columns) {
    // Quoted: End is a word of SQL.
    const std::string name = '"' + std::string(column) + '"';
    const std::string placeholder = "?" + std::to_string(parameter++);
    if (!list.empty()) list += ", ";
    if (form == ColumnForm::kNames) list += name;
    if (form == ColumnForm::kPlaceholders) list += placeholder;
    if (form == ColumnForm::kAssignments) list.append(name).append(" = ").append(placeholder);
  }
  return list;
}

std::string InsertSql(const char* begin, const ColumnNames& columns) {
  return std::string(begin) + " (" + ColumnList(ColumnForm::kNames, columns, 1) + ") VALUES (" +
         ColumnList(ColumnForm::kPlaceholders, columns, 1) + ")";
}

}  // namespace ce::host
