#include "handheld/store/sql_columns.h"

namespace ce::host {

std::string ColumnList(ColumnForm form, const std::vector<const char*>& columns,
                       int firstParameter) {
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

}  // namespace ce::host
