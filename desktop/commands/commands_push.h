// "push": contacts, appointments and tasks to the handheld.
#pragma once

#include <filesystem>
#include <optional>
#include <vector>

#include "common/calendar/zone.h"
#include "desktop/commands/console.h"
#include "desktop/sync/push_session.h"
#include "desktop/wire/connection.h"

namespace desktop {

struct PushOptions {
  std::vector<std::filesystem::path> files;
  PushPolicy policy;
  bool json = false;
  calendar::Zone zone = calendar::Zone::OfHost();  // the handheld's
  std::optional<std::filesystem::path> mapping;    // nothing for the target's own
};

// Reads all files before it sends anything. Says on the output what became of each record, and on
// the error output what those that were sent lost.
int Push(const ConnectionOptions& connection, const PushOptions& options, const Console& console);

}  // namespace desktop
