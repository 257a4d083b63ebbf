// One synchronisation of a folder with a handheld, from the reading of both sides to the end.
#pragma once

#include <chrono>
#include <filesystem>
#include <functional>
#include <optional>
#include <set>
#include <string>
#include <vector>

#include "common/calendar/zone.h"
#include "desktop/folder/desk_folder.h"
#include "desktop/sync/archive.h"
#include "desktop/sync/execution.h"
#include "desktop/sync/plan.h"
#include "desktop/sync/planner.h"
#include "desktop/wire/connection.h"

namespace desktop {

struct SyncOptions {
  std::filesystem::path folder;
  std::optional<calendar::Zone> zone;  // the handheld's; the one that is remembered by default
  std::optional<std::string> country;  // whose numbers are meant; as well
  std::set<RecordKind> kinds = {RecordKind::kContacts, RecordKind::kAppointments,
                                RecordKind::kTasks, RecordKind::kMessages, RecordKind::kCalls};
  ConflictPolicy conflict = ConflictPolicy::kKeepBoth;
  AskPerson ask;
  bool allowDeletions = false;
  bool dryRun = false;                    // changes nothing, on either side
  std::chrono::milliseconds quiet{1000};  // of PushRecovery
  StepHook hook;
  DeskFolder::Clock clock = std::chrono::system_clock::now;
};

struct SyncPlan {
  Plan items;
  std::vector<ArchiveAddition> archive;
  std::vector<std::string> notices;     // about the handheld and the zone, a line each
  std::vector<DeskNotice> deskNotices;  // about the desk's files
};

struct SyncResults {
  std::vector<ActionResult> items;  // an entry an action of the plan
  SyncCounts counts;                // of what was done; of the plan in a dry run
  bool whole = true;                // nothing failed, and nothing waits for a person
  bool begun = false;               // something was done
  std::string problem;              // what ended the run before its end; the next one goes on
};

struct SyncListener {
  // Each is called once: with what is about to be done, before anything is, and with what became of
  // it. Neither when the sides cannot be read.
  std::function<void(const SyncPlan& plan)> onPlan;
  std::function<void(const SyncPlan& plan, const SyncResults& results)> onEnd;
};

// What of the folder these kinds are kept in.
DeskParts PartsOf(const std::set<RecordKind>& kinds);

// Throws Error when the sides cannot be read.
void Synchronise(const ConnectionOptions& connection, const SyncOptions& options,
                 const SyncListener& listener);

}  // namespace desktop
