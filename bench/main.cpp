// compare: the programs' speed against floors, in one run. See --help.
#include <fmt/core.h>

#include <CLI/CLI.hpp>
#include <cstdio>
#include <fstream>
#include <string>
#include <vector>

#include "bench/handheld_copy.h"
#include "bench/rows.h"
#include "tests/support/paths.h"

namespace {

namespace fs = std::filesystem;

struct CommandLine {
  bench::Options options;
  bool quick = false;
  std::vector<std::string> only;
  fs::path json;
};

// The row itself, or a group of rows that begin with its name.
bool IsNamed(const bench::Row& row, const std::string& name) {
  const std::string rowName = row.name;
  return rowName == name || rowName.starts_with(name + ".");
}

bool IsWanted(const bench::Row& row, const std::vector<std::string>& only) {
  if (only.empty()) return !row.onlyByName;
  for (const std::string& name : only)
    if (IsNamed(row, name)) return true;
  return false;
}

void AddOptions(CLI::App& app, CommandLine& line) {
  std::string names;
  for (const bench::Row& row : bench::Rows())
    names += fmt::format("  {:<18}{}{}\n", row.name, row.what,
                         row.onlyByName ? " (only when named)" : "");
  app.add_flag("--quick", line.quick, "A tenth of the records, three pairs");
  app.add_option("--pairs", line.options.pairs, "Runs of each, in turn; default 5")
      ->check(CLI::Range(1, 1000).description(""));
  app.add_option("--count", line.options.count, "So many records in every row")
      ->check(CLI::Range(1, 10'000'000).description(""));
  app.add_option("--only", line.only, "These rows; \"down\" is all that begin with \"down.\"")
      ->type_name("ROW")
      ->check([](const std::string& name) {
        for (const bench::Row& row : bench::Rows())
          if (IsNamed(row, name)) return std::string();
        return name + " is no row";
      });
  app.add_option("--json", line.json, "The results and every run of them, as JSON")
      ->type_name("FILE");
  app.add_option("--directory", line.options.directory,
                 "The disk to measure on; by default that of the build")
      ->type_name("DIR");
  app.footer("Rows:\n" + names +
             "A value is ours against the floor's, the median of the pairs, or where there is no "
             "floor\nthe figure itself. docs/speed.md says what a floor is.");
}

// A line at a time, as soon as it is known.
void Print(const std::string& line) {
  fmt::print("{}", line);
  std::fflush(stdout);
}

void Run(const CommandLine& line) {
  std::vector<bench::Result> results;
  Print(bench::TableHead());
  for (const bench::Row& row : bench::Rows()) {
    if (!IsWanted(row, line.only)) continue;
    results.push_back(row.measure(row, line.options));
    Print(bench::TableLine(results.back()));
  }
  for (const bench::Result& result : bench::MemoryResults(results)) {
    results.push_back(result);
    Print(bench::TableLine(result));
  }
  if (line.json.empty()) return;
  std::ofstream file(line.json);
  file.exceptions(std::ios::badbit | std::ios::failbit);
  file << bench::ToJson(results);
}

int ParseAndRun(int argc, char** argv) {
  CommandLine line;
  CLI::App app("The speed of corvane and corvane-desktop against floors.", "bench/compare");
  AddOptions(app, line);
  try {
    app.parse(argc, argv);
  } catch (const CLI::ParseError& error) {
    return app.exit(error) == 0 ? 0 : 2;
  }
  if (line.quick) {
    line.options.divisor = 10;
    if (app.count("--pairs") == 0) line.options.pairs = 3;
  }
  if (line.options.directory.empty())
    line.options.directory =
        fs::path(corvane::testing::ProgramPath("")).parent_path().parent_path();
  // Removed with whatever a row leaves when it fails.
  const bench::WorkDirectory work(line.options.directory);
  line.options.directory = work.path();
  Run(line);
  return 0;
}

}  // namespace

int main(int argc, char** argv) {
  try {
    return ParseAndRun(argc, argv);
  } catch (const std::exception& problem) {
    fmt::print(stderr, "compare: {}\n", problem.what());
    return 1;
  }
}
