#include "tests/support/case_lines.h"

#include <fstream>
#include <stdexcept>

#include "tests/support/paths.h"

namespace corvane::testing {
namespace {

std::string WithLineBreaks(std::string_view cell) {
  constexpr std::string_view kSign = "¶";
  std::string text(cell);
  for (std::size_t at = 0; (at = text.find(kSign, at)) != text.npos;) {
    text.replace(at, kSign.size(), "\n");
  }
  return text;
}

CaseLine Parsed(std::string_view line) {
  constexpr std::string_view kBetween = " | ";
  CaseLine parsed;
  std::size_t end = line.find(kBetween);
  parsed.name = line.substr(0, end);
  while (end != line.npos) {
    line.remove_prefix(end + kBetween.size());
    end = line.find(kBetween);
    parsed.cells.push_back(WithLineBreaks(line.substr(0, end)));
  }
  return parsed;
}

}  // namespace

std::vector<CaseLine> CasesOf(const std::string& file, std::string_view section) {
  std::ifstream in(SourcePath(file));
  std::vector<CaseLine> cases;
  bool inside = false;
  for (std::string line; std::getline(in, line);) {
    if (line.empty() || line.front() == '#') continue;
    if (line.front() == '[') {
      inside = line == "[" + std::string(section) + "]";
    } else if (inside) {
      cases.push_back(Parsed(line));
    }
  }
  if (cases.empty()) throw std::runtime_error(file + " has no cases of " + std::string(section));
  return cases;
}

}  // namespace corvane::testing
