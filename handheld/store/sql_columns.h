// Lists of columns, as the statements that read and write items need them.
#pragma once

#include <string>
#include <vector>

namespace ce::host {

enum class ColumnForm {
  kNames,         // "A", "B"
  kPlaceholders,  // ?2, ?3
  kAssignments,   // "A" = ?2, "B" = ?3
};

// The columns' parameters are numbered from `firstParameter` on.
std::string ColumnList(ColumnForm form, const std::vector<const char*>& columns,
                       int firstParameter);

}  // namespace ce::host
