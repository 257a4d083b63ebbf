// Steps from an older format of a handheld's directory to the present one.
#pragma once

#include <filesystem>
#include <span>

#include "platform/types.h"

namespace ce::host {

class Registry;

// Leads from format `from` to the next. It is run again when it was interrupted, so it must stand
// that. Throws HandheldError.
struct Migration {
  DWORD from;
  void (*apply)(const std::filesystem::path& directory, Registry& registry);
};

// Runs the steps from the registry's format version up to `target`, storing the version after each.
// Throws HandheldError: a newer version, a version that no step leads on from, a failed step.
void MigrateHandheld(const std::filesystem::path& directory, Registry& registry, DWORD target,
                     std::span<const Migration> steps);

}  // namespace ce::host
