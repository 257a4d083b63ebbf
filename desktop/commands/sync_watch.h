// Stays, and runs a synchronisation whenever a folder has changed or a time has passed.
#pragma once

#include <chrono>
#include <filesystem>
#include <functional>
#include <string>
#include <vector>

#include "desktop/folder/desk_folder.h"

namespace desktop {

struct WatchedPlace {
  std::filesystem::path folder;
  DeskParts parts;
  std::function<int()> run;                      // an exit code
  std::function<void(const std::string&)> tell;  // why changes of the folder cannot be seen
};

struct WatchOptions {
  std::chrono::seconds every{300};  // for what changes elsewhere
  int interruptFd = -1;             // a ConnectionOptions'
  std::function<void()> onWait;     // called before it waits for what may come; may be empty
};

// Each place has its run at once, and then its own times. A folder that has changed is left to
// settle before its run; what a run writes causes one more, which finds nothing to do. One that
// failed is not repeated before its time or the next change.
//
// Returns once it is interrupted, with what the places' last runs have ended with: kPartlyDone for
// one that failed after another had not. What runs throw, but for Interrupted, ends it.
std::vector<int> WatchPlaces(std::vector<WatchedPlace> places, const WatchOptions& options);

}  // namespace desktop
