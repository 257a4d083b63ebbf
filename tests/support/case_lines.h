// Tables of cases as text, in files beside the tests.
#pragma once

#include <gtest/gtest.h>

#include <ostream>
#include <string>
#include <string_view>
#include <vector>

namespace corvane::testing {

// A case on a line: "NAME | cell | cell". "¶" in a cell is a line break.
struct CaseLine {
  std::string name;
  std::vector<std::string> cells;
};

// Those below the line "[SECTION]" of a file of the source tree, up to the next section. Lines that
// begin with "#" say what the file holds. Throws when there are none.
std::vector<CaseLine> CasesOf(const std::string& file, std::string_view section);

// How GoogleTest names and shows them.
inline std::string CaseName(const ::testing::TestParamInfo<CaseLine>& info) {
  return info.param.name;
}
inline void PrintTo(const CaseLine& line, std::ostream* out) {
  *out << ::testing::PrintToString(line.cells);
}

}  // namespace corvane::testing
