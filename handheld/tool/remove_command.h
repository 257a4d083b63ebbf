// Takes off a handheld what a person names.
#pragma once

#include <filesystem>
#include <optional>
#include <string>
#include <vector>

#include "handheld/tool/report.h"

namespace tool {

struct RemoveCommand {
  std::vector<std::string> what;      // identifiers of items; or "messages" or "calls" and numbers
  std::vector<std::string> uids;      // of items
  bool all = false;                   // messages, or calls
  std::optional<std::string> folder;  // messages of it
};

// What is not there is named, and the others removed. Throws UsageError for what makes no sense.
Outcome RunRemove(const std::filesystem::path& directory, const RemoveCommand& command,
                  const Report& report);

}  // namespace tool
