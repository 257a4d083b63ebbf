#include "desktop/commands/commands_restore.h"

#include <fmt/format.h>

#include "common/text/text.h"
#include "desktop/commands/result.h"
#include "desktop/commands/sync_targets.h"
#include "desktop/sync/restore.h"

namespace desktop {
namespace {

int ListRuns(const std::filesystem::path& folder, const Console& console) {
  for (const SavedRun& run : RestorableRuns(folder)) {
    if (console.json)
      PrintJson({{"time", run.time}, {"what", run.what}}, console);
    else
      console.out << text::Shown(fmt::format("{}  {}\n", run.time, run.what));
  }
  FlushOutput(console);
  return kDone;
}

int RestoreTime(const SyncTarget& target, const std::string& time, const Console& console) {
  RestoreOptions options;
  options.folder = target.sync.folder;
  options.time = time;
  const RestoreResults results = Restore(target.connection, options);
  for (const std::string& problem : results.problems) {
    console.err << text::Shown(problem) << '\n';
  }
  TellResult(console,
             {{"time", results.time}, {"desk", results.desk}, {"handheld", results.handheld}},
             fmt::format("as before {}: {} changed on the desk, {} on the handheld", results.time,
                         results.desk, results.handheld));
  return results.problems.empty() ? kDone : kPartlyDone;
}

}  // namespace

int RestoreSync(const ConnectionOptions& connection, const PlaceOptions& place,
                const RestoreCommand& command, const Console& console) {
  return RunGuarded(console, [&] {
    const SyncTarget target = TargetOf(command.what, connection, place, {}, console);
    return command.time ? RestoreTime(target, *command.time, console)
                        : ListRuns(target.sync.folder, console);
  });
}

}  // namespace desktop
