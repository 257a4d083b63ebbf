// "pull": contacts, appointments and tasks from the handheld.
#pragma once

#include <filesystem>
#include <optional>
#include <vector>

#include "common/calendar/zone.h"
#include "common/formats/vcard/vcard.h"
#include "desktop/commands/console.h"
#include "desktop/wire/connection.h"
#include "desktop/wire/download.h"
#include "desktop/wire/oid.h"

namespace desktop {

// kVcf is for contacts, kIcs for appointments and tasks.
enum class PullFormat { kVcf, kIcs, kXml, kJson };

// Whether records of the kind can be had so.
bool IsFormatOf(PullFormat format, RecordKind kind);

struct PullOptions {
  RecordKind kind = RecordKind::kContacts;
  std::vector<Oid> oids;             // empty for all
  std::optional<PullFormat> format;  // one that the kind can be had in; nothing for kVcf or kIcs
  formats::VCardVersion version = formats::VCardVersion::k30;
  std::optional<std::filesystem::path> output;  // nothing for the standard output
  // Nothing for the target's own; used by kVcf and kIcs alone.
  std::optional<std::filesystem::path> mapping;
  calendar::Zone zone = calendar::Zone::OfHost();  // the handheld's
};

// kPartlyDone when the handheld reported errors for some identifiers, or when the download broke
// off after some complete documents: what they held then goes to the output with ".partial" added
// to its name, or to the standard output. An interrupted one writes nothing.
// A complete pull to a file says on the standard output how many items were pulled. What a format
// cannot say goes to the error output.
int Pull(const ConnectionOptions& connection, const PullOptions& options, const Console& console);

}  // namespace desktop
