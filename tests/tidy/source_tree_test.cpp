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

// What a room may include beside itself, from the ground up. Every room with code is named. The
// files that stand in a folder of rooms, and in none of them, are rooms by themselves.
const std::map<std::string, std::set<std::string>> kMayInclude = {
    {"common/text", {}},
    {"common/calendar", {}},
    {"common/files", {}},
    {"common/phone", {"common/text"}},
    {"common/formats/items", {"common/text", "common/calendar"}},
    {"common/formats/lines", {"common/text", "common/formats/items"}},
    {"common/formats/vcard",
     {"common/text", "common/calendar", "common/formats/items", "common/formats/lines"}},
    {"common/formats/icalendar",
     {"common/text", "common/calendar", "common/formats/items", "common/formats/lines"}},
    {"common/formats/json",
     {"common/text", "common/files", "common/formats/items", "common/formats/lines"}},
    {"common/formats/csv", {"common/formats/items"}},
    {"common/formats/backup",
     {"common/text", "common/files", "common/formats/items", "common/formats/lines",
      "common/formats/json"}},
    {"common/page", {"common/text", "common/calendar", "common/phone", "common/formats/items"}},

    {"common/command_line", {"common/text"}},
    {"common/terminal", {"common/text"}},

    {"platform", {}},
    {"agent/request_handler.h", {"platform"}},
    {"agent/log", {"platform", "agent/request_handler.h"}},
    {"agent/vocabulary", {"platform"}},
    {"agent/core", {"platform", "agent/request_handler.h", "agent/log"}},
    {"agent/time", {"platform", "agent/request_handler.h", "agent/log"}},
    {"agent/device", {"platform", "agent/request_handler.h", "agent/log"}},
    {"agent/xml", {"platform", "agent/log", "agent/core", "agent/time"}},
    {"agent/messages", {"platform", "agent/log", "agent/core", "agent/xml", "agent/device"}},
    {"agent/pim_export",
     {"platform", "agent/request_handler.h", "agent/log", "agent/core", "agent/time", "agent/xml",
      "agent/vocabulary", "agent/messages"}},
    {"agent/pim_import",
     {"platform", "agent/request_handler.h", "agent/log", "agent/core", "agent/time", "agent/xml",
      "agent/vocabulary"}},
    {"agent/request_table.cpp",
     {"agent/request_handler.h", "agent/device", "agent/log", "agent/pim_export",
      "agent/pim_import", "agent/time"}},
    // The one file of the agent that knows on what it runs.
    {"agent/main.cpp",
     {"agent/core", "agent/log", "common/command_line", "handheld/directory", "handheld/network",
      "handheld/store", "handheld/system"}},

    {"handheld/base", {"platform", "common/text"}},
    {"handheld/registry", {"platform", "common/text", "handheld/base"}},
    {"handheld/clock",
     {"platform", "common/text", "common/calendar", "handheld/base", "handheld/registry"}},
    {"handheld/directory",
     {"platform", "common/text", "handheld/base", "handheld/registry", "handheld/clock"}},
    {"handheld/network", {"platform", "handheld/base", "handheld/directory"}},
    {"handheld/system",
     {"platform", "common/text", "handheld/base", "handheld/registry", "handheld/clock",
      "handheld/directory", "handheld/network"}},
    {"handheld/automation", {"platform", "handheld/base"}},
    {"handheld/dom", {"platform", "common/text", "handheld/base", "handheld/automation"}},
    {"handheld/store",
     {"platform", "common/text", "common/calendar", "common/files", "handheld/base",
      "handheld/directory"}},
    {"handheld/salvage", {"platform", "handheld/base", "handheld/store"}},
    {"handheld/outlook",
     {"platform", "common/text", "common/calendar", "handheld/base", "handheld/directory",
      "handheld/automation", "handheld/store"}},
    {"handheld/messages",
     {"platform", "common/text", "handheld/base", "handheld/directory", "handheld/store"}},
    {"handheld/phone",
     {"platform", "common/text", "handheld/base", "handheld/directory", "handheld/store"}},
    {"handheld/ink", {"platform", "common/text", "handheld/base", "handheld/system"}},
    {"handheld/windows",
     {"platform", "common/text", "handheld/base", "handheld/directory", "handheld/ink"}},
    {"handheld/modules",
     {"platform", "common/text", "handheld/base", "handheld/directory", "handheld/phone",
      "handheld/windows"}},
    {"handheld/tool", {"platform", "common", "handheld"}},

    {"desktop/wire", {"common"}},
    {"desktop/records", {"common", "desktop/wire"}},
    {"desktop/merge", {"common"}},
    {"desktop/folder", {"common", "desktop/merge"}},
    {"desktop/transfer", {"common", "desktop/merge", "desktop/wire", "desktop/records"}},
    {"desktop/sync",
     {"common", "desktop/merge", "desktop/folder", "desktop/wire", "desktop/records",
      "desktop/transfer"}},
    {"desktop/config", {"common", "desktop/merge", "desktop/wire", "desktop/records"}},
    {"desktop/commands",
     {"common", "desktop/config", "desktop/merge", "desktop/folder", "desktop/wire",
      "desktop/records", "desktop/transfer", "desktop/sync"}},
    {"desktop/main.cpp", {"common", "desktop"}},

    {"packaging/reference", {}},
};

const std::vector<std::string> kCode = {"agent", "platform", "handheld", "desktop",  "common",
                                        "tests", "bench",    "fuzz",     "packaging"};

struct Source {
  std::string path;  // from the root
  std::string room;  // as in kMayInclude; empty for tests and their like
  std::vector<std::string> lines;
};

// The longest name in the table that the path is, or lies below; empty for none.
std::string RoomOf(const std::string& path) {
  std::string room;
  for (const auto& [name, rooms] : kMayInclude) {
    if (path == name || path.rfind(name + "/", 0) == 0) room = name;
  }
  return room;
}

bool MayInclude(const std::set<std::string>& allowed, const std::string& target) {
  return std::any_of(allowed.begin(), allowed.end(), [&](const std::string& room) {
    return target == room || target.rfind(room + "/", 0) == 0;
  });
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
      source.room = RoomOf(source.path);
      std::ifstream file(entry.path());
      for (std::string line; std::getline(file, line);) source.lines.push_back(line);
      sources.push_back(std::move(source));
    }
  }
  return sources;
}

TEST(SourceTree, RoomsIncludeOnlyDownwards) {
  const std::regex include("^#include \"([^\"]+)\"");
  int looked = 0;
  for (const Source& source :
       Sources({"agent", "platform", "handheld", "desktop", "common", "packaging"})) {
    const auto rule = kMayInclude.find(source.room);
    ASSERT_NE(rule, kMayInclude.end()) << source.path << " stands in no room";
    for (const std::string& line : source.lines) {
      std::smatch match;
      if (!std::regex_search(line, match, include)) continue;
      ++looked;
      const std::string target = match[1];
      EXPECT_TRUE(RoomOf(target) == source.room || MayInclude(rule->second, target))
          << source.path << " includes " << target;
    }
  }
  EXPECT_GT(looked, 1000);
}

TEST(SourceTree, NothingAboveTheSeamKnowsTheHost) {
  const std::regex host(
      "#include "
      "<(sqlite3|libxml|pugixml|libical|utf8proc|unistd|sys/|netinet|arpa|fcntl|poll|pthread|dirent"
      "|signal|errno|thread|filesystem|fstream)");
  for (const Source& source : Sources({"agent", "platform"})) {
    if (source.path == "agent/main.cpp") continue;
    for (const std::string& line : source.lines)
      EXPECT_FALSE(std::regex_search(line, host)) << source.path << ": " << line;
  }
}

TEST(SourceTree, NoConditionalCompilationOutsideTheHandheld) {
  for (const Source& source : Sources(kCode)) {
    if (source.path.rfind("handheld/", 0) == 0 || source.path.rfind("tests/", 0) == 0) continue;
    for (const std::string& line : source.lines)
      EXPECT_FALSE(line.rfind("#if", 0) == 0) << source.path << ": " << line;
  }
}

TEST(SourceTree, HeadersAreGuardedByPragmaOnce) {
  for (const Source& source : Sources(kCode)) {
    if (source.path.substr(source.path.size() - 2) != ".h") continue;
    EXPECT_NE(std::find(source.lines.begin(), source.lines.end(), "#pragma once"),
              source.lines.end())
        << source.path;
  }
}

TEST(SourceTree, LinesAndFilesStayShort) {
  constexpr std::size_t kLongestLine = 100;
  constexpr std::size_t kLongestFile = 500;
  for (const Source& source : Sources(kCode)) {
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
  for (const Source& source : Sources(kCode)) {
    for (const std::string& line : source.lines)
      EXPECT_FALSE(std::regex_search(line, marks)) << source.path << ": " << line;
  }
}

}  // namespace
