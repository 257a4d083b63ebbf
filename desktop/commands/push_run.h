// A push session with its progress and its report.
#pragma once

#include <filesystem>
#include <optional>
#include <span>
#include <string>

#include "desktop/commands/console.h"
#include "desktop/sync/push_session.h"
#include "desktop/wire/connection.h"

namespace desktop {

struct PushReporting {
  std::string label;  // of the progress bar
  bool json = false;
};

// Gives the exit code. Throws Error when the mapping or the output cannot be used; what stops a
// session is told and counts in the exit code.
int RunPush(const ConnectionOptions& connection, const PushPolicy& policy,
            const std::optional<std::filesystem::path>& mapping,
            std::span<const PushRecord> records, const PushReporting& reporting,
            const Console& console);

}  // namespace desktop
