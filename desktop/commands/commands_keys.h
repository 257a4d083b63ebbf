// "keys": which elements the handheld writes.
#pragma once

#include "desktop/commands/console.h"
#include "desktop/records/record_kind.h"
#include "desktop/wire/connection.h"

namespace desktop {

// Prints the names of the elements that records of the kind may have, in the handheld's order: one
// a line, with json as an array of strings.
int PrintKeys(const ConnectionOptions& connection, RecordKind kind, bool json,
              const Console& console);

}  // namespace desktop
