// The first session in the README can be followed to the letter.
#include <gtest/gtest.h>

#include <fstream>
#include <sstream>
#include <string>
#include <vector>

#include "tests/programs/tool_test.h"
#include "tests/support/paths.h"

namespace corvane::testing {
namespace {

// A command as it stands in the README, and the lines that stand below it. "…" is any lines.
struct Step {
  std::string command;
  std::vector<std::string> shown;
};

std::vector<Step> FirstSession() {
  std::ifstream readme(SourcePath("README.md"));
  std::vector<Step> steps;
  bool inside = false;
  bool block = false;
  for (std::string line; std::getline(readme, line);) {
    if (line.rfind("## ", 0) == 0) inside = line == "## A first session";
    if (!inside || line.rfind("    ", 0) != 0) {
      block = false;
      continue;
    }
    const std::string text = line.substr(4);
    if (text.rfind("$ ", 0) == 0) {
      steps.push_back({text.substr(2), {}});
      block = true;
    } else if (block) {
      steps.back().shown.push_back(text);
    }
  }
  return steps;
}

// In a network of its own where the system lets one be made, so that the port in the README is
// free.
constexpr char kPrologue[] = R"(
alone='unshare --user --net --map-root-user'
if [ -z "$ALONE" ] && $alone true 2>/dev/null; then ALONE=1 exec $alone bash "$0"; fi
[ -z "$ALONE" ] || ip link set lo up
set -e
)";

// Runs them in one shell and answers what each printed. An agent in the background is waited for
// by what it prints.
std::string Script(const std::vector<Step>& steps) {
  std::ostringstream script;
  script << kPrologue;
  for (std::size_t i = 0; i < steps.size(); ++i) {
    const std::string output = "printed." + std::to_string(i);
    std::string command = steps[i].command;
    if (command.back() == '&') {
      script << command.substr(0, command.size() - 1) << " > " << output << " 2>&1 &\n"
             << "until [ -s " << output << " ]; do kill -0 $!; sleep 0.05; done\n";
    } else {
      script << "{ " << command << "; } > " << output << " 2>&1\n";
    }
  }
  return script.str();
}

std::vector<std::string> LinesOf(const std::string& path) {
  std::ifstream file(path);
  std::vector<std::string> lines;
  for (std::string line; std::getline(file, line);) lines.push_back(line);
  return lines;
}

bool Shows(const std::vector<std::string>& printed, const std::vector<std::string>& shown) {
  std::size_t at = 0;
  bool any = false;
  for (const std::string& line : shown) {
    if (line == "…") {
      any = true;
      continue;
    }
    while (any && at < printed.size() && printed[at] != line) ++at;
    if (at == printed.size() || printed[at] != line) return false;
    ++at;
    any = false;
  }
  return any || at == printed.size();
}

class Readme : public ToolTest {};

TEST_F(Readme, FirstSessionRunsAsItStands) {
  const std::vector<Step> steps = FirstSession();
  ASSERT_GT(steps.size(), 10u);
  std::filesystem::create_directory_symlink(SourcePath("samples"), Path("samples"));
  File("session.sh", Script(steps));

  const Ended ended = Shell("cd '" + directory_.path().string() + "' && exec bash session.sh");
  EXPECT_EQ(ended.code, 0) << ended.out << ended.err;
  for (std::size_t i = 0; i < steps.size(); ++i) {
    const std::vector<std::string> printed = LinesOf(Path("printed." + std::to_string(i)));
    EXPECT_TRUE(Shows(printed, steps[i].shown)) << "$ " << steps[i].command << "\n"
                                                << ::testing::PrintToString(printed);
  }
}

}  // namespace
}  // namespace corvane::testing
