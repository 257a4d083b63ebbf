#include "common/formats/items/message.h"

namespace formats {
namespace {

struct MessageFlagBit {
  std::uint32_t bit;
  bool MessageFlags::*flag;
};
constexpr MessageFlagBit kMessageFlagBits[] = {
    {0x01, &MessageFlags::read},          {0x02, &MessageFlags::unmodified},
    {0x04, &MessageFlags::submitted},     {0x08, &MessageFlags::unsent},
    {0x10, &MessageFlags::hasAttachment}, {0x20, &MessageFlags::fromMe},
};
constexpr std::uint32_t kNamedBits = 0x3F;

}  // namespace

std::int32_t ToFlags(const MessageFlags& flags) {
  std::uint32_t number = flags.others & ~kNamedBits;
  for (const MessageFlagBit& row : kMessageFlagBits) {
    if (flags.*row.flag) number |= row.bit;
  }
  return static_cast<std::int32_t>(number);
}

MessageFlags FromFlags(std::int32_t number) {
  const auto bits = static_cast<std::uint32_t>(number);
  MessageFlags flags;
  for (const MessageFlagBit& row : kMessageFlagBits) flags.*row.flag = (bits & row.bit) != 0;
  flags.others = bits & ~kNamedBits;
  return flags;
}

}  // namespace formats
