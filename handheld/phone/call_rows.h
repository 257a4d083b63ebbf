// Calls as the store has them, newest first.
#pragma once

#include <cstdint>
#include <limits>
#include <optional>
#include <string>

#include "handheld/store/store.h"
#include "platform/phone.h"

namespace ce::host {

struct StoredCall {
  std::int64_t startTime = 0;  // file time: ticks since 1601, UTC
  std::int64_t endTime = 0;
  DWORD kind = IOM_MISSED;  // IOM_...
  DWORD flags = 0;          // CALLLOG_...
  DWORD callerIdType = CALLERIDTYPE_UNAVAILABLE;
  std::optional<std::u16string> number;
  std::optional<std::u16string> name;
  std::optional<std::u16string> nameType;  // "w" work, "h" home, "m" mobile
  std::optional<std::u16string> note;      // the path of a note on the handheld
  friend bool operator==(const StoredCall&, const StoredCall&) = default;
};

// Where a call stands in the log: by its start, of several at once the one inserted last first. As
// made here it is ahead of the newest.
struct CallPosition {
  std::int64_t startTime = std::numeric_limits<std::int64_t>::max();
  std::int64_t id = std::numeric_limits<std::int64_t>::max();
  friend bool operator==(const CallPosition&, const CallPosition&) = default;
};

struct NumberedCall {
  std::int64_t id = 0;
  StoredCall call;
  CallPosition position() const { return {call.startTime, id}; }
};

// The first call behind a position, found in the index. `found` tells whether there is one.
[[nodiscard]] HRESULT ReadCallBehind(Store& store, const CallPosition& position, NumberedCall& call,
                                     bool& found);
// The position of the `offset`-th call, counted from 0. `found` as above.
[[nodiscard]] HRESULT FindCallPosition(Store& store, std::int64_t offset, CallPosition& position,
                                       bool& found);
[[nodiscard]] HRESULT CountCalls(Store& store, std::int64_t& count);

}  // namespace ce::host
