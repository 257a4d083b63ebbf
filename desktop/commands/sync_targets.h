// What "sync" and "restore" are about: a pair by its name, a folder, or all pairs.
#pragma once

#include <filesystem>
#include <map>
#include <optional>
#include <set>
#include <string>
#include <vector>

#include "desktop/commands/commands_pair.h"
#include "desktop/commands/console.h"
#include "desktop/records/record_kind.h"
#include "desktop/sync/planner.h"
#include "desktop/sync/sync_run.h"
#include "desktop/wire/connection.h"

namespace desktop {

// What people call the policies.
extern const std::map<std::string, ConflictPolicy> kConflictPolicies;

// A folder, and the handheld that it is kept in step with.
struct SyncTarget {
  std::string pair;  // its name; empty for a folder that is of no pair
  ConnectionOptions connection;
  SyncOptions sync;  // but for whom to ask
};

// What a command line says beside the place. It comes before what the pair has.
struct SyncChoices {
  std::optional<std::set<RecordKind>> kinds = {};
  std::optional<ConflictPolicy> conflict = {};
  bool allowDeletions = false;
  bool dryRun = false;
};

// A word that is the name of a pair means the pair, and that is said where a folder has the name,
// too: "./NAME" means the folder. A folder of a pair is that pair. Throws Error when the pairs
// cannot be read.
SyncTarget TargetOf(const std::string& word, const ConnectionOptions& connection,
                    const PlaceOptions& place, const SyncChoices& choices, const Console& console);

// All pairs by their names. Throws Error.
std::vector<SyncTarget> AllTargets(const ConnectionOptions& connection, const PlaceOptions& place,
                                   const SyncChoices& choices);

}  // namespace desktop
