// "push": contacts and other records to the handheld.
#pragma once

#include <filesystem>
#include <optional>
#include <vector>

#include "desktop/connection.h"
#include "desktop/console.h"
#include "desktop/push_session.h"

namespace desktop {

struct PushOptions {
  std::vector<std::filesystem::path> files;
  PushPolicy policy;
  bool json = false;
  std::optional<std::filesystem::path> mapping;  // nothing for the target's own
};

// Reads all files before it sends anything. Says on the output what became of each record.
int Push(const ConnectionOptions& connection, const PushOptions& options, const Console& console);

}  // namespace desktop
