// "pull": contacts from the handheld.
#pragma once

#include <filesystem>
#include <optional>
#include <vector>

#include "desktop/connection.h"
#include "desktop/console.h"
#include "desktop/download.h"
#include "desktop/oid.h"
#include "formats/vcard.h"

namespace desktop {

enum class PullFormat { kVcf, kXml, kJson };

struct PullOptions {
  RecordKind kind = RecordKind::kContacts;
  std::vector<Oid> oids;  // empty for all
  PullFormat format = PullFormat::kVcf;
  formats::VCardVersion version = formats::VCardVersion::k30;
  std::optional<std::filesystem::path> output;   // nothing for the standard output
  std::optional<std::filesystem::path> mapping;  // nothing for the target's own; used by kVcf alone
};

// kPartlyDone when the handheld reported errors for some identifiers, or when the download broke
// off after some complete documents: what they held then goes to the output with ".partial" added
// to its name, or to the standard output. An interrupted one writes nothing.
// A complete pull to a file says on the standard output how many contacts are in it.
int Pull(const ConnectionOptions& connection, const PullOptions& options, const Console& console);

}  // namespace desktop
