// A telephone call of the past as people's programs exchange it: independent of wire, store and
// file. Text is UTF-8.
#pragma once

#include <cstdint>
#include <optional>
#include <string>

#include "common/formats/items/message_time.h"

namespace formats {

struct Call {
  std::string number;
  std::string name;
  std::string numberType;  // "w" work, "h" home, "m" mobile; empty for none
  std::optional<MessageTime> start;
  std::optional<MessageTime> end;
  bool outgoing = false;
  bool connected = false;
  bool missed = false;
  bool roaming = false;
  bool ended = false;
  std::int32_t callerId = 0;  // a CallerId, or what else the telephone gives
  std::string note;
  friend bool operator==(const Call&, const Call&) = default;
};

enum CallerId : std::int32_t {
  kCallerIdUnavailable = 0,
  kCallerIdBlocked = 1,
  kCallerIdAvailable = 2,
};

// The number of the handheld's call log for what kind of call it was.
enum class CallKind : std::uint32_t { kMissed = 0, kIncoming = 1, kOutgoing = 2 };
CallKind KindOf(const Call& call);

// The handheld's flag bits: outgoing 1, connected 2, ended 4, roaming 8.
std::uint32_t ToCallFlags(const Call& call);
void SetCallFlags(Call& call, std::uint32_t flags);

}  // namespace formats
