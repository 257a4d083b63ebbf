// "push": contacts, appointments and tasks to the handheld.
#pragma once

#include <filesystem>
#include <optional>
#include <span>
#include <string>
#include <vector>

#include "common/calendar/zone.h"
#include "common/formats/vcard/overflow.h"
#include "desktop/commands/console.h"
#include "desktop/transfer/push_session.h"
#include "desktop/wire/connection.h"

namespace desktop {

struct PushOptions {
  std::vector<std::filesystem::path> files;
  PushPolicy policy;
  formats::Overflow overflow = formats::Overflow::kLeftOut;  // of contacts
  calendar::Zone zone = calendar::Zone::OfHost();            // the handheld's
  bool zoneIsGuessed = false;                                // and to be told when times go by it
  std::optional<std::filesystem::path> mapping;              // nothing for the target's own
  std::optional<std::string> country;  // of PushPolicy; nothing for the locale's
};

// Reads all files before it sends anything. Says on the output what became of each record where
// that is wanted, and of those that failed always; and on the error output what those that were
// sent lost.
int Push(const ConnectionOptions& connection, const PushOptions& options, const Console& console);

struct PushReporting {
  std::string label;  // of the progress bar
  bool each = false;  // a line a record, which is else for Verbosity::kAll
};

// A session with its progress and its report. Gives the exit code. Throws Error when the mapping or
// the output cannot be used; what stops a session is told and counts in the exit code.
int RunPush(const ConnectionOptions& connection, const PushPolicy& policy,
            const std::optional<std::filesystem::path>& mapping,
            std::span<const PushRecord> records, const PushReporting& reporting,
            const Console& console);

}  // namespace desktop
