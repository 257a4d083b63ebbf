// "sync": a folder and a handheld brought in step; or all pairs.
#pragma once

#include <chrono>
#include <optional>
#include <string>

#include "desktop/commands/console.h"
#include "desktop/commands/sync_targets.h"
#include "desktop/wire/connection.h"

namespace desktop {

struct SyncCommand {
  std::optional<std::string> what;  // a pair's name or a folder; nothing for all pairs
  SyncChoices choices;
  bool json = false;
  bool quiet = false;    // problems alone
  bool verbose = false;  // every notice by itself
  bool watch = false;    // to stay until interrupted
  std::chrono::seconds every{300};
};

// Says on the output what is about to be done, a line an item, and how much it was; on the error
// output what is lost on the way, and what has failed. All pairs take their turn whatever becomes
// of the others, each below a headline; the status is that of all of them, or kPartlyDone when they
// differ. A watch says only what is new.
int Sync(const ConnectionOptions& connection, const PlaceOptions& place, const SyncCommand& command,
         const Console& console);

}  // namespace desktop
