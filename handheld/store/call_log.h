// The handheld's call log: calls as the store has them, newest first.
#pragma once

#include <cstdint>
#include <limits>
#include <optional>
#include <string>
#include <vector>

#include "handheld/store/columns.h"
#include "handheld/store/row_scan.h"
#include "handheld/store/store_writer.h"
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

inline constexpr Column<StoredCall> kCallColumns[] = {
    {"start_time", &StoredCall::startTime},
    {"end_time", &StoredCall::endTime},
    {"kind", &StoredCall::kind},
    {"flags", &StoredCall::flags},
    {"caller_id_type", &StoredCall::callerIdType},
    {"number", &StoredCall::number},
    {"name", &StoredCall::name},
    {"name_type", &StoredCall::nameType},
    {"note", &StoredCall::note},
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

// The log from call to call.
class CallScan {
 public:
  // The first call behind a position, found in the index unless the call read last stands there.
  // `found` tells whether there is one.
  [[nodiscard]] HRESULT ReadBehind(Store& store, const CallPosition& position, NumberedCall& call,
                                   bool& found);

 private:
  RowScan rows_;
  CallPosition last_;
};
// The position of the `offset`-th call, counted from 0. `found` as above.
[[nodiscard]] HRESULT FindCallPosition(Store& store, std::int64_t offset, CallPosition& position,
                                       bool& found);
[[nodiscard]] HRESULT CountCalls(Store& store, std::int64_t& count);

// The log, for tools that fill, show and empty it. A call is known by a number that is never given
// away again. Whoever downloads the log meanwhile does so over a connection of its own.
class CallLog final : public StoreWriter {
 public:
  explicit CallLog(std::unique_ptr<Store> store) : StoreWriter(std::move(store)) {}

  // A text ends at its first zero for whoever reads it through the telephone's library.
  [[nodiscard]] HRESULT Insert(const StoredCall& call, std::int64_t* id = nullptr);
  // Whether the log has a call that is the same in everything.
  [[nodiscard]] HRESULT Contains(const StoredCall& call, bool& found);
  // Newest first, at most `limit`, from behind `after` on. To read a log of any size call it with
  // the last call's position until it answers none.
  [[nodiscard]] HRESULT Read(const CallPosition& after, std::size_t limit,
                             std::vector<NumberedCall>& calls);
  [[nodiscard]] HRESULT Count(std::int64_t& count);
  // `found` false, and success, when there is no such call.
  [[nodiscard]] HRESULT Delete(std::int64_t id, bool& found);
  [[nodiscard]] HRESULT Clear();
};

}  // namespace ce::host
