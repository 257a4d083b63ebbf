// "restore": what a synchronisation has changed, undone.
#pragma once

#include <optional>
#include <string>

#include "desktop/commands/commands_pair.h"
#include "desktop/commands/console.h"
#include "desktop/wire/connection.h"

namespace desktop {

struct RestoreCommand {
  std::string what;                 // a pair's name or a folder
  std::optional<std::string> time;  // nothing to list what there is
};

int RestoreSync(const ConnectionOptions& connection, const PlaceOptions& place,
                const RestoreCommand& command, const Console& console);

}  // namespace desktop
