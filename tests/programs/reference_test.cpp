// Manual pages and completion say what the programs' help says: no more and no less.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <regex>
#include <set>
#include <sstream>

#include "tests/programs/tool_test.h"
#include "tests/support/paths.h"

namespace corvane::testing {
namespace {

namespace fs = std::filesystem;

using Words = std::set<std::string>;

// What each of them knows of a command.
struct Known {
  Words options;
  Words commands;
};

std::vector<std::string> LinesIn(const std::string& text) {
  std::istringstream stream(text);
  std::vector<std::string> lines;
  for (std::string line; std::getline(stream, line);) lines.push_back(line);
  return lines;
}

// The first group of every match.
Words Found(const std::string& text, const char* pattern) {
  Words words;
  const std::regex regex(pattern);
  for (std::sregex_iterator match(text.begin(), text.end(), regex), end; match != end; ++match)
    words.insert((*match)[1]);
  return words;
}

std::string Joined(const std::vector<std::string>& words, const std::string& separator) {
  std::string text;
  for (const std::string& word : words) text += separator + word;
  return text;
}

std::string ReadFile(const fs::path& path) {
  std::ifstream file(path);
  EXPECT_TRUE(file) << path;
  return {std::istreambuf_iterator<char>(file), {}};
}

class InstalledReference : public ToolTest {
 protected:
  void SetUp() override {
    const fs::path build = fs::path(ProgramPath("corvane")).parent_path().parent_path();
    const Ended installed =
        Shell("cmake --install '" + build.string() + "' --prefix '" + Path("root") + "'");
    ASSERT_EQ(installed.code, 0) << installed.err;
  }

  std::string Share(const std::string& path) const { return Path("root/share/" + path); }
};

class Reference : public InstalledReference, public ::testing::WithParamInterface<const char*> {
 protected:
  using Command = std::vector<std::string>;  // the words behind the program's name

  Known FromHelp(Command command) const {
    command.push_back("--help");
    const Ended help = Run(GetParam(), command);
    EXPECT_EQ(help.code, 0) << help.err;
    Known known;
    std::string section;
    for (const std::string& line : LinesIn(help.out)) {
      if (!line.starts_with(' ')) section = line;
      std::string names = line.substr(0, std::min(line.find(' ', 2), line.size()));
      if (section == "Options:") known.options.merge(Found(names, "(--?[a-z0-9][a-z0-9-]*)"));
      if (section == "Subcommands:") known.commands.merge(Found(names, "^  ([a-z0-9-]+)"));
    }
    return known;
  }

  Known FromManual(const Command& command) const {
    const std::string name = GetParam() + (command.empty() ? "" : "-" + command.front());
    Known known;
    std::string text = ReadFile(Share("man/man1/" + name + ".1"));
    text = std::regex_replace(text, std::regex("\\\\f[BIR]"), "");
    text = std::regex_replace(text, std::regex("\\\\-"), "-");
    std::string section, below, before;
    for (const std::string& line : LinesIn(text)) {
      if (line.starts_with(".SH ")) section = line.substr(4);
      if (line.starts_with(".SS ")) below = line.substr(4);
      if (line.starts_with(".SS ") && command.size() == 1) known.commands.insert(below);
      const bool isEntry = before == ".TP";
      before = line;
      if (isEntry && command.empty() && section == "COMMANDS") known.commands.insert(line);
      const bool isOwn =
          command.size() > 1 ? section == "COMMANDS" && below == command[1] : section == "OPTIONS";
      if (isEntry && isOwn) known.options.merge(Found(line, "(?:^|, )(--?[a-z0-9][a-z0-9-]*)"));
    }
    return known;
  }

  // What is offered behind the command and this beginning of a word.
  Words Offered(const std::string& shell, const Command& command, const std::string& word) const {
    const std::string program = GetParam();
    std::string function = "_" + program;
    std::ranges::replace(function, '-', '_');
    std::string script;
    if (shell == "bash") {
      script = "bash -c '. \"$0\"; COMP_WORDS=(" + program + Joined(command, " ") + " \"" + word +
               "\"); COMP_CWORD=" + std::to_string(command.size() + 1) + "; " + function +
               "; printf \"%s\\n\" \"${COMPREPLY[@]}\"' " +
               Share("bash-completion/completions/" + program);
    } else if (shell == "fish") {
      script = "HOME=" + Path("home") + " fish --no-config -c 'source " +
               Share("fish/vendor_completions.d/" + program + ".fish") + "; complete -C \"" +
               program + Joined(command, " ") + " " + word + "\"' | cut -f 1";
    } else {
      // Its own machinery is told what a command takes; here it shows that.
      script =
          "zsh -f -c 'compdef() {}; _arguments() { shift; print -rl -- \"$@\"; "
          "state=command }; _describe() { print -rl -- \"<\"${^commands} }; . " +
          Share("zsh/site-functions/_" + program) + "; " + function + Joined(command, "_") + "'";
      const Ended shown = Shell(script);
      EXPECT_EQ(shown.code, 0) << shown.err;
      return word == "-" ? Found(shown.out, "(?:[*)])(--?[a-z0-9][a-z0-9-]*)\\[")
                         : Found(shown.out, "<([a-z0-9-]+):");
    }
    const Ended shown = Shell(script);
    EXPECT_EQ(shown.code, 0) << shown.err;
    EXPECT_EQ(shown.err, "");
    return Found(shown.out, "([^\\n]+)\\n");
  }

  void Compare(const Command& command, const Words& ofProgram) {
    SCOPED_TRACE(GetParam() + Joined(command, " "));
    const Known help = FromHelp(command);
    ASSERT_FALSE(help.options.empty());
    const Known manual = FromManual(command);
    EXPECT_EQ(manual.options, help.options);
    EXPECT_EQ(manual.commands, help.commands);
    Words mayStand = help.options;  // where the program's options may stand behind a command
    mayStand.insert(ofProgram.begin(), ofProgram.end());
    for (const char* shell : {"bash", "fish", "zsh"}) {
      SCOPED_TRACE(shell);
      const Words options = Offered(shell, command, "-");
      EXPECT_TRUE(options == help.options || options == mayStand)
          << ::testing::PrintToString(options);
      if (!help.commands.empty()) EXPECT_EQ(Offered(shell, command, ""), help.commands);
    }
    for (const std::string& word : help.commands) {
      Command below = command;
      below.push_back(word);
      Compare(below, ofProgram);
    }
  }
};

TEST_P(Reference, SaysWhatHelpSays) {
  Compare({}, FromHelp({}).options);
}

INSTANTIATE_TEST_SUITE_P(Programs, Reference,
                         ::testing::Values("corvane", "corvane-device", "corvane-desktop"),
                         [](const auto& each) {
                           std::string name = each.param;
                           std::ranges::replace(name, '-', '_');
                           return name;
                         });

TEST_F(InstalledReference, PagesAreWellFormed) {
  int pages = 0;
  for (const auto& entry : fs::recursive_directory_iterator(Share("man"))) {
    if (!entry.is_regular_file()) continue;
    const Ended shown = Shell("LC_ALL=C.UTF-8 MANWIDTH=80 man --warnings -l '" +
                              entry.path().string() + "' >/dev/null");
    EXPECT_EQ(shown.code, 0) << entry.path();
    EXPECT_EQ(shown.err, "") << entry.path();
    ++pages;
  }
  EXPECT_GT(pages, 20);
}

TEST(HandheldPage, NamesEverySetting) {
  const std::string page = ReadFile(SourcePath("packaging/man/corvane-handheld.5.in"));
  const Words settings = Found(ReadFile(SourcePath("handheld/base/settings.h")), "u\"(\\w+)\"");
  EXPECT_GT(settings.size(), 15u);
  for (const std::string& name : settings) EXPECT_NE(page.find(name), page.npos) << name;
}

}  // namespace
}  // namespace corvane::testing
