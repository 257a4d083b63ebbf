// The messages of a handheld in threads, a person each.
#pragma once

#include "handheld/tool/report.h"
#include "handheld/tool/session.h"

namespace tool {

// The thread with the newest message first, its messages oldest first. Whose number it is, the
// contacts tell. As JSON a line is a thread: "people" of the contacts ("oid", "name"), "others"
// ("address", "name"), "messages" as formats::MessageToJson writes them, with their numbers.
Outcome ShowThreads(Session& session, bool json, const Report& report);

}  // namespace tool
