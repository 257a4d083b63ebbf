// What can be saved of a damaged store.
#pragma once

#include "handheld/tool/report.h"
#include "handheld/tool/session.h"

namespace tool {

// Says what of the store can be read and what is lost. With `write` what can be read takes the
// store's place, and the damaged one stays beside it as "store.db.damaged"; otherwise nothing
// changes. A sound store is left alone. kPartlyDone when something is lost. Throws files::Error.
Outcome Repair(Session& session, bool write, const Report& report);

}  // namespace tool
