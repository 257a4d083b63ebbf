// Takes records off a handheld.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "handheld/tool/report.h"
#include "handheld/tool/session.h"

namespace tool {

// By the numbers that ShowRecords prints. Those that are not there are named, and the others
// removed.
Outcome RemoveItems(Session& session, const std::vector<std::uint32_t>& oids, const Report& report);
Outcome RemoveMessages(Session& session, const std::vector<std::int64_t>& ids,
                       const Report& report);
Outcome RemoveCalls(Session& session, const std::vector<std::int64_t>& ids, const Report& report);

// Of the folder alone, not of those below it.
Outcome RemoveMessagesOfFolder(Session& session, const std::string& path, const Report& report);
Outcome RemoveAllMessages(Session& session, const Report& report);
Outcome RemoveAllCalls(Session& session, const Report& report);

}  // namespace tool
