// "page": a folder that is kept in step with a handheld, as a page for people to look at.
#pragma once

#include <filesystem>
#include <optional>
#include <string>

#include "desktop/commands/commands_pair.h"
#include "desktop/commands/console.h"
#include "desktop/wire/connection.h"

namespace desktop {

struct PageCommand {
  std::string what;                             // a pair's name or a folder
  std::optional<std::filesystem::path> output;  // nothing or "-" for the standard output
};

// Asks no handheld. What cannot be read is named on the error output and on the page; kPartlyDone
// then.
int MakePage(const ConnectionOptions& connection, const PlaceOptions& place,
             const PageCommand& command, const Console& console);

}  // namespace desktop
