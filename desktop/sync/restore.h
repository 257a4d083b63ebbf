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

// What runs have put on the desk goes to the trash, what they have changed and removed is as it was
// before the first of them; the handheld has what it had, under new OIDs where it had it no more.
// Edits of people that no run has touched stay on the desk. What both sides have is saved before,
// as a run of its own. One that was broken off is finished by the same once more. Throws Error.
RestoreResults Restore(const ConnectionOptions& connection, const RestoreOptions& options);

}  // namespace desktop
