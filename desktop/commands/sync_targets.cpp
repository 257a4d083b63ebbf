#include "desktop/commands/sync_targets.h"

#include <fmt/format.h>

#include <system_error>

#include "common/text/text.h"
#include "desktop/config/pair.h"

namespace desktop {

const std::map<std::string, ConflictPolicy> kConflictPolicies = {
    {"keep-both", ConflictPolicy::kKeepBoth},
    {"desk", ConflictPolicy::kDesk},
    {"handheld", ConflictPolicy::kHandheld},
    {"ask", ConflictPolicy::kAsk}};

namespace {

namespace fs = std::filesystem;

// The same for every way to name a folder, whether it is there or not.
fs::path OneNameOf(const fs::path& folder) {
  std::error_code error;
  fs::path name = fs::weakly_canonical(fs::absolute(folder), error);
  if (error) name = fs::absolute(folder).lexically_normal();
  return name.has_filename() ? name : name.parent_path();
}

std::optional<Pair> FindPairOf(const fs::path& folder) {
  const fs::path wanted = OneNameOf(folder);
  for (Pair& pair : AllPairs()) {
    if (OneNameOf(pair.folder) == wanted) return std::move(pair);
  }
  return std::nullopt;
}

SyncTarget TargetFrom(const std::optional<Pair>& pair, const fs::path& folder,
                      const ConnectionOptions& connection, const PlaceOptions& place,
                      const SyncChoices& choices) {
  SyncTarget target{{}, connection, {}};
  SyncOptions& sync = target.sync;
  sync.folder = folder;
  if (pair) {
    target.pair = pair->name;
    sync.zone = calendar::Zone::Find(pair->zone);
    if (!place.addressGiven) target.connection.target = pair->address;
    if (!pair->country.empty()) sync.country = pair->country;
    if (!pair->kinds.empty()) sync.kinds = pair->kinds;
    if (!pair->policy.empty()) sync.conflict = kConflictPolicies.at(pair->policy);
  }
  if (place.zone) sync.zone = place.zone;
  if (place.country) sync.country = place.country;
  if (choices.kinds) sync.kinds = *choices.kinds;
  if (choices.conflict) sync.conflict = *choices.conflict;
  sync.allowDeletions = choices.allowDeletions;
  sync.dryRun = choices.dryRun;
  return target;
}

}  // namespace

SyncTarget TargetOf(const std::string& word, const ConnectionOptions& connection,
                    const PlaceOptions& place, const SyncChoices& choices, const Console& console) {
  std::optional<Pair> pair = FindPair(word);
  std::error_code error;
  if (!pair) {
    pair = FindPairOf(word);
    return TargetFrom(pair, word, connection, place, choices);
  }
  if (fs::is_directory(word, error) && OneNameOf(word) != OneNameOf(pair->folder)) {
    console.err << text::Shown(
        fmt::format("{} is the pair with {}; ./{} is the folder of that name\n", word,
                    pair->folder.string(), word));
  }
  return TargetFrom(pair, pair->folder, connection, place, choices);
}

std::vector<SyncTarget> AllTargets(const ConnectionOptions& connection, const PlaceOptions& place,
                                   const SyncChoices& choices) {
  std::vector<SyncTarget> targets;
  for (const Pair& pair : AllPairs()) {
    targets.push_back(TargetFrom(pair, pair.folder, connection, place, choices));
  }
  return targets;
}

}  // namespace desktop
