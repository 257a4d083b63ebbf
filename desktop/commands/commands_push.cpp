#include "desktop/commands/commands_push.h"

#include <string>

#include "desktop/commands/push_run.h"

namespace desktop {

int Push(const ConnectionOptions& connection, const PushOptions& options, const Console& console) {
  return RunGuarded(console, [&] {
    std::vector<PushRecord> records;
    for (const std::filesystem::path& file : options.files) {
      for (PushRecord& record : ReadPushFile(file, options.zone, console.err)) {
        records.push_back(std::move(record));
      }
    }
    return RunPush(connection, options.policy, options.mapping, records, {"Pushing", options.json},
                   console);
  });
}

}  // namespace desktop
