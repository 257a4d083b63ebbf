// "delete": items away from the handheld.
#pragma once

#include <filesystem>
#include <optional>
#include <vector>

#include "desktop/commands/console.h"
#include "desktop/wire/connection.h"
#include "desktop/wire/oid.h"
#include "desktop/wire/record_kind.h"

namespace desktop {

struct DeleteOptions {
  RecordKind kind = RecordKind::kContacts;
  std::vector<Oid> oids;                         // empty for all of the kind
  bool yes = false;                              // all without asking
  std::optional<std::filesystem::path> mapping;  // nothing for the target's own
};

// Deleting all asks on a terminal; elsewhere it is kUsage without yes. What is deleted leaves the
// mapping too. The agent does not tell a deleted item from one that was not there.
int Delete(const ConnectionOptions& connection, const DeleteOptions& options,
           const Console& console);

// All text messages; asks likewise. The handheld passes over drafts and deleted items.
int DeleteMessages(const ConnectionOptions& connection, bool yes, const Console& console);

}  // namespace desktop
