// The tree keeps its own rules: which folder may include which, and how long lines and files are.
#include <gtest/gtest.h>

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <map>
#include <regex>
#include <set>
#include <string>
#include <vector>

#include "tests/support/paths.h"

namespace {
namespace fs = std::filesystem;

const fs::path kRoot = corvane::testing::SourcePath("");

// What a folder may include beside itself. Every folder with code is named.
const std::map<std::string, std::set<std::string>> kMayInclude = {
    {"platform", {}},  // the headers; platform/host is looked at by itself
    {"calendar", {}},
    {"platform/host", {"platform", "calendar"}},
    {"base", {"platform"}},
    {"log", {"base", "platform"}},
    {"core", {"base", "log", "platform"}},
    {"time", {"base", "log", "platform"}},
    {"xml", {"base", "log", "core", "time", "platform"}},
    {"vocabulary", {"platform"}},
    {"messages", {"base", "log", "core", "xml", "device", "platform"}},
    {"pim_export", {"base", "log", "core", "time", "xml", "vocabulary", "messages", "platform"}},
    {"pim_import", {"base", "log", "core", "time", "xml", "vocabulary", "platform"}},
    {"device", {"base", "log", "platform"}},
    {"agent",
     {"base", "log", "core", "time", "xml", "pim_export", "pim_import", "device", "platform"}},
    {"files", {}},
    {"formats", {"calendar"}},
    {"desktop", {"files", "formats", "calendar"}},
    {"maintenance", {"files", "formats", "calendar", "platform", "platform/host"}},
};

const std::vector<std::string> kAboveTheSeam = {
    "base",     "log",        "core",       "time",   "xml",   "vocabulary",
    "messages", "pim_export", "pim_import", "device", "agent", "platform"};

struct Source {
  std::string path;    // from the root
  std::string folder;  // as in kMayInclude
  std::vector<std::string> lines;
};

std::string FolderOf(const std::string& path) {
  if (path.rfind("platform/host/", 0) == 0) return "platform/host";
  return path.substr(0, path.find('/'));
}

std::vector<Source> Sources(const std::vector<std::string>& folders) {
  std::vector<Source> sources;
  for (const std::string& folder : folders) {
    if (!fs::is_directory(kRoot / folder)) continue;
    for (const auto& entry : fs::recursive_directory_iterator(kRoot / folder)) {
      const std::string extension = entry.path().extension().string();
      if (!entry.is_regular_file() || (extension != ".h" && extension != ".cpp")) continue;
      Source source;
      source.path = fs::relative(entry.path(), kRoot).generic_string();
      source.folder = FolderOf(source.path);
      std::ifstream file(entry.path());
      for (std::string line; std::getline(file, line);) source.lines.push_back(line);
      sources.push_back(std::move(source));
    }
  }
  return sources;
}

std::vector<std::string> CodeFolders() {
  return {"calendar",   "platform", "base",        "log",        "core",   "time",  "xml",
          "vocabulary", "messages", "pim_export",  "pim_import", "device", "agent", "files",
          "formats",    "desktop",  "maintenance", "tools",      "tests",  "bench", "fuzz"};
}

TEST(SourceTree, FoldersIncludeOnlyDownwards) {
  const std::regex include("^#include \"([^\"]+)\"");
  int looked = 0;
  for (const Source& source : Sources(CodeFolders())) {
    const auto rule = kMayInclude.find(source.folder);
    if (rule == kMayInclude.end()) continue;  // programs and tests may use what they like
    for (const std::string& line : source.lines) {
      std::smatch match;
      if (!std::regex_search(line, match, include)) continue;
      ++looked;
      const std::string target = FolderOf(match[1]);
      EXPECT_TRUE(target == source.folder || rule->second.count(target))
          << source.path << " includes " << match[1];
    }
  }
  EXPECT_GT(looked, 100);
}

TEST(SourceTree, NothingAboveTheSeamKnowsTheHost) {
  const std::regex host(
      "#include <(sqlite3|libxml|pugixml|libical|unistd|sys/|netinet|arpa|fcntl|poll|pthread|dirent"
      "|signal|errno|thread|filesystem|fstream)");
  for (const Source& source : Sources(kAboveTheSeam)) {
    if (source.folder == "platform/host") continue;
    for (const std::string& line : source.lines)
      EXPECT_FALSE(std::regex_search(line, host)) << source.path << ": " << line;
  }
}

TEST(SourceTree, NoConditionalCompilationOutsideThePlatform) {
  for (const Source& source : Sources(CodeFolders())) {
    if (source.folder == "platform/host" || source.folder == "tests") continue;
    for (const std::string& line : source.lines)
      EXPECT_FALSE(line.rfind("#if", 0) == 0) << source.path << ": " << line;
  }
}

TEST(SourceTree, HeadersAreGuardedByPragmaOnce) {
  for (const Source& source : Sources(CodeFolders())) {
    if (source.path.substr(source.path.size() - 2) != ".h") continue;
    EXPECT_NE(std::find(source.lines.begin(), source.lines.end(), "#pragma once"),
              source.lines.end())
        << source.path;
  }
}

TEST(SourceTree, LinesAndFilesStayShort) {
  constexpr std::size_t kLongestLine = 100;
  constexpr std::size_t kLongestFile = 500;
  for (const Source& source : Sources(CodeFolders())) {
    EXPECT_LE(source.lines.size(), kLongestFile) << source.path;
    for (std::size_t i = 0; i < source.lines.size(); ++i) {
      // Characters, not bytes: continuation bytes of UTF-8 do not count.
      const auto characters =
          std::count_if(source.lines[i].begin(), source.lines[i].end(),
                        [](char c) { return (static_cast<unsigned char>(c) & 0xC0) != 0x80; });
      EXPECT_LE(static_cast<std::size_t>(characters), kLongestLine) << source.path << ":" << i + 1;
    }
  }
}

TEST(SourceTree, NothingIsLeftUnfinished) {
  const std::regex marks(
      "\\b(TO"
      "DO|FIX"
      "ME|XX"
      "X|HA"
      "CK)\\b|GTEST_SK"
      "IP|DISAB"
      "LED_");
  for (const Source& source : Sources(CodeFolders())) {
    for (const std::string& line : source.lines)
      EXPECT_FALSE(std::regex_search(line, marks)) << source.path << ": " << line;
  }
}

}  // namespace
