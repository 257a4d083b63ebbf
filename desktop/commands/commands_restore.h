// "restore": what a synchronisation has changed, undone.
#pragma once

#include <filesystem>
#include <optional>
#include <string>

#include "desktop/commands/console.h"
#include "desktop/wire/connection.h"

namespace desktop {

struct RestoreCommand {
  std::filesystem::path folder;
  std::optional<std::string> time;  // nothing to list what there is
};

int RestoreSync(const ConnectionOptions& connection, const RestoreCommand& command,
                const Console& console);

}  // namespace desktop
