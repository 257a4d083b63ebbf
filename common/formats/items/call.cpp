#include "common/formats/items/call.h"

namespace formats {
namespace {

struct CallFlagBit {
  std::uint32_t bit;
  bool Call::*flag;
};
constexpr CallFlagBit kCallFlagBits[] = {
    {0x1, &Call::outgoing}, {0x2, &Call::connected}, {0x4, &Call::ended}, {0x8, &Call::roaming}};

}  // namespace

CallKind KindOf(const Call& call) {
  if (call.missed) return CallKind::kMissed;
  return call.outgoing ? CallKind::kOutgoing : CallKind::kIncoming;
}

std::uint32_t ToCallFlags(const Call& call) {
  std::uint32_t flags = 0;
  for (const CallFlagBit& row : kCallFlagBits) {
    if (call.*row.flag) flags |= row.bit;
  }
  return flags;
}

void SetCallFlags(Call& call, std::uint32_t flags) {
  for (const CallFlagBit& row : kCallFlagBits) call.*row.flag = (flags & row.bit) != 0;
}

}  // namespace formats
