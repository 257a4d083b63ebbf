// "pull": contacts, appointments, tasks, text messages and calls from the handheld.
#pragma once

#include <filesystem>
#include <optional>
#include <string>
#include <vector>

#include "common/calendar/zone.h"
#include "common/formats/vcard/vcard.h"
#include "desktop/commands/console.h"
#include "desktop/records/record_kind.h"
#include "desktop/wire/connection.h"

namespace desktop {

struct PullOptions {
  RecordKind kind = RecordKind::kContacts;
  std::vector<Oid> oids;               // of items; empty for all
  std::vector<std::string> uids;       // of items as well, by the mapping
  std::optional<RecordFormat> format;  // one that the kind can be had in; nothing for the usual one
  formats::VCardVersion version = formats::VCardVersion::k30;
  formats::Overflow overflow = formats::Overflow::kLeftOut;  // of kVcf
  std::optional<std::filesystem::path> output;               // nothing for the standard output
  bool overwrite = false;  // an output that holds more records than have come
  // Nothing for the target's own; used by kVcf and kIcs alone.
  std::optional<std::filesystem::path> mapping;
  calendar::Zone zone = calendar::Zone::OfHost();  // the handheld's
  bool zoneIsGuessed = false;                      // and to be told when times go by it
};

// kPartlyDone when the handheld reported errors for some identifiers, or when the download broke
// off after some complete documents: what they held then goes to the output with ".partial" added
// to its name, or to the standard output. That gets items once they are all there, and the
// telephone's records as they come (a backup file at the end). An interrupted one leaves no file.
// An output that exists and holds more records than have come stays as it is: that is kFailed. A
// complete pull to a file says on the standard output how many records were pulled. What a format
// cannot say, and what the handheld leaves out of a message, is said as Losses says it.
int Pull(const ConnectionOptions& connection, const PullOptions& options, const Console& console);

}  // namespace desktop
