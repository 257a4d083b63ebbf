// "sync": a folder and a handheld brought in step.
#pragma once

#include "desktop/commands/console.h"
#include "desktop/sync/sync_run.h"
#include "desktop/wire/connection.h"

namespace desktop {

struct SyncCommand {
  SyncOptions sync;  // but for whom to ask, which is the console
  bool json = false;
  bool quiet = false;    // problems alone
  bool verbose = false;  // every notice by itself
};

// Says on the output what is about to be done, a line an item, and how much it was; on the error
// output what is lost on the way, and what has failed.
int Sync(const ConnectionOptions& connection, const SyncCommand& command, const Console& console);

}  // namespace desktop
