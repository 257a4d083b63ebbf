// The platform's dates, scans, pictures and documents against Wine's: the same source asks both.
#include <gtest/gtest.h>
#include <stdlib.h>

#include <cstdio>
#include <filesystem>
#include <regex>
#include <stdexcept>
#include <string>
#include <system_error>
#include <vector>

#include "tests/support/paths.h"
#include "tests/support/wire/process.h"
#include "tests/wine/known_differences.h"

namespace corvane::testing {
namespace {

namespace fs = std::filesystem;

// Where Wine keeps its registry and its copy of the system: too large for memory.
class WinePrefix {
 public:
  WinePrefix() {
    std::string pattern = (fs::temp_directory_path() / "corvane-wine-XXXXXX").string();
    if (!::mkdtemp(pattern.data())) throw std::runtime_error("no directory for Wine: " + pattern);
    path_ = pattern;
  }
  WinePrefix(const WinePrefix&) = delete;
  WinePrefix& operator=(const WinePrefix&) = delete;
  ~WinePrefix() {
    for (const char* how : {"-k", "-w"}) Process("/usr/bin/wineserver", {how}, Options()).Wait();
    std::error_code ignored;
    fs::remove_all(path_, ignored);
  }

  // Without what asks for more to be installed, and what tells the host's desktop of programs.
  ProcessOptions Options() const {
    return {.environment = {{"WINEPREFIX", path_},
                            {"WINEDEBUG", "-all"},
                            {"WINEDLLOVERRIDES", "mscoree,mshtml,winemenubuilder.exe="},
                            {"LC_ALL", "C.UTF-8"}}};
  }

 private:
  std::string path_;
};

std::vector<std::string> LinesOf(Process&& program) {
  std::vector<std::string> lines;
  for (std::string line = program.ReadLine(); !line.empty(); line = program.ReadLine()) {
    if (line.back() == '\r') line.pop_back();
    lines.push_back(std::move(line));
  }
  EXPECT_EQ(program.Wait(), 0);
  return lines;
}

// Takes the known differences out; counts for each whether it was one.
void Settle(Answers& answers, const std::vector<std::regex>& questions, std::vector<int>& met) {
  const auto known = KnownDifferences();
  for (std::size_t i = 0; i < known.size() && answers.own != answers.wine; ++i) {
    if (!std::regex_search(answers.question, questions[i],
                           std::regex_constants::match_continuous)) {
      continue;
    }
    const std::string before = answers.wine;
    known[i].settle(answers);
    if (answers.wine != before) ++met[i];
  }
}

TEST(PlatformAnswers, AreWinesButForKnownDifferences) {
  const WinePrefix prefix;
  ProcessOptions quietly = prefix.Options();
  quietly.captureErrors = true;
  Process boot("/usr/bin/wine", {"wineboot", "--init"}, quietly);
  ASSERT_EQ(boot.Wait(), 0) << boot.ReadErrors();
  const std::vector<std::string> own = LinesOf(Process(ProgramPath("platform_answers"), {}));
  const std::vector<std::string> wine =
      LinesOf(Process("/usr/bin/wine", {ProgramPath("wine_answers.exe")}, prefix.Options()));
  ASSERT_GT(own.size(), 50'000u);
  ASSERT_EQ(own.size(), wine.size());

  const auto known = KnownDifferences();
  std::vector<std::regex> questions;
  for (const KnownDifference& each : known) questions.emplace_back(each.questions);
  std::vector<int> met(known.size());
  int different = 0;
  for (std::size_t i = 0; i < own.size(); ++i) {
    const std::size_t tab = own[i].find('\t');
    ASSERT_EQ(own[i].substr(0, tab), wine[i].substr(0, wine[i].find('\t')));
    if (own[i] == wine[i]) continue;
    ++different;
    Answers answers{own[i].substr(0, tab), own[i].substr(tab + 1), wine[i].substr(tab + 1)};
    Settle(answers, questions, met);
    EXPECT_EQ(answers.own, answers.wine) << answers.question;
  }

  std::printf("%zu answers compared, %d differ as is known:\n", own.size(), different);
  for (std::size_t i = 0; i < known.size(); ++i) {
    std::printf("%6d  %s\n", met[i], known[i].why.c_str());
    EXPECT_GT(met[i], 0) << "no answer differs any more: " << known[i].why;
  }
}

}  // namespace
}  // namespace corvane::testing
