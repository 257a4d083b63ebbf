// Which records a command is about, when a person names them.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "handheld/tool/report.h"
#include "handheld/tool/session.h"

namespace tool {

struct ChosenRecords {
  std::vector<std::int64_t> numbers;  // by which the handheld knows them
  std::vector<std::string> uids;      // by which other programs know items
  bool all() const { return numbers.empty() && uids.empty(); }
};

// Makes the session's walks visit these alone. Those that are not there are named: kPartlyDone
// then, and kFailed when none of them is. Throws UsageError for UIDs of messages and calls, which
// have none.
template <typename Record>
Outcome ChooseRecords(Session& session, const ChosenRecords& chosen, const Report& report);

// Of an item of whatever kind, 0 for one that is not known. Throws StatusError.
std::uint32_t OidOfUid(Session& session, const std::string& uid);

}  // namespace tool
