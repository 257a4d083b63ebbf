// Makes a handheld, changes its settings, says what it is and whether it is sound.
#pragma once

#include <filesystem>
#include <optional>
#include <string>
#include <vector>

#include "handheld/tool/report.h"
#include "handheld/tool/session.h"

namespace tool {

struct InitOptions {
  std::optional<std::string> language = {};   // a tag such as "de-DE"; the host's
  std::optional<std::string> osVersion = {};  // "MAJOR.MINOR"; 5.2
  std::optional<std::string> zone = {};       // a name of the zone database; the host's
  std::optional<std::uint32_t> firstOid = {};
};
Outcome InitHandheld(const std::filesystem::path& directory, const InitOptions& options,
                     const Report& report);

// The keys that SetSetting knows, each with a word about its values.
struct SettingHelp {
  std::string key;
  std::string values;
};
std::vector<SettingHelp> SettingKeys();
Outcome SetSetting(Session& session, const std::string& key, const std::string& value,
                   const Report& report);

Outcome ShowHandheld(Session& session, const Report& report);

// Looks for damage in the store and prints a line for each problem.
Outcome CheckHandheld(Session& session, const Report& report);

}  // namespace tool
