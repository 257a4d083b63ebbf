// Brings both sides back to what they had before a run.
#pragma once

#include <chrono>
#include <cstddef>
#include <filesystem>
#include <string>
#include <vector>

#include "desktop/sync/execution.h"
#include "desktop/sync/history.h"
#include "desktop/wire/connection.h"

namespace desktop {

struct RestoreOptions {
  std::filesystem::path folder;
  std::string time;                       // of a run in its history, or "latest"
  std::chrono::milliseconds quiet{1000};  // of PushRecovery
  StepHook hook;
};

struct RestoreResults {
  std::string time;                   // that was meant
  std::size_t desk = 0;               // files brought back, changed back or removed
  std::size_t handheld = 0;           // items
  std::vector<std::string> problems;  // a line each: what could not be brought back
};

// The runs that can be undone, the oldest first. Throws Error.
std::vector<SavedRun> RestorableRuns(const std::filesystem::path& folder);

// Both sides have what they had before that run. Files of the desk that were not there go to the
// trash, all others are what they were, whoever has changed them since; the handheld has its items,
// under new OIDs where it had them no more. What both sides have is saved before, as a run of its
// own. One that was broken off is finished by the same once more. Throws Error.
RestoreResults Restore(const ConnectionOptions& connection, const RestoreOptions& options);

}  // namespace desktop
