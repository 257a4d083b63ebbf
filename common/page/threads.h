// Messages in threads, as people read them.
#pragma once

#include <cstdint>
#include <optional>
#include <span>
#include <vector>

#include "common/calendar/zone.h"
#include "common/formats/items/message.h"
#include "common/page/directory.h"

namespace page {

// A time by the clock of the zone, from 1970 on. Nothing sorts first.
using Seconds = std::optional<std::int64_t>;
Seconds LocalSeconds(const std::optional<formats::MessageTime>& time, const calendar::Zone& zone);

struct ThreadMessage {
  Seconds time;
  const formats::TextMessage* message;
};

// All that went to and fro with a person of the directory, or with an address that nobody there
// has. What went to several people at once is a thread of theirs.
struct Thread {
  std::vector<int> people;                     // their places in the directory
  std::vector<formats::MessageParty> parties;  // who is not in it
  std::vector<ThreadMessage> messages;         // oldest first, never empty
};

// That with the newest message first. The messages must outlive the answer.
std::vector<Thread> ThreadsOf(std::span<const formats::TextMessage> messages,
                              const calendar::Zone& zone, const Directory& directory);

}  // namespace page
