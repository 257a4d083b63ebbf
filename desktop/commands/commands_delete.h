// "delete": items away from the handheld.
#pragma once

#include <filesystem>
#include <optional>
#include <string>
#include <vector>

#include "desktop/commands/console.h"
#include "desktop/records/record_kind.h"
#include "desktop/wire/connection.h"

namespace desktop {

struct DeleteOptions {
  RecordKind kind = RecordKind::kContacts;
  std::vector<Oid> oids;                         // of items; empty for all of the kind
  std::vector<std::string> uids;                 // of items as well, by the mapping
  bool yes = false;                              // all without asking
  std::optional<std::filesystem::path> mapping;  // nothing for the target's own
};

// Deleting all asks on a terminal; elsewhere it is kUsage without yes. What is deleted leaves the
// mapping too. Of items that are named and not there it says so, and they make it kPartlyDone. The
// agent passes over text messages that are drafts or deleted.
int Delete(const ConnectionOptions& connection, const DeleteOptions& options,
           const Console& console);

}  // namespace desktop
