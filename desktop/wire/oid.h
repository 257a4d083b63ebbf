// Object identifiers: unsigned 32-bit numbers that XML writes as signed decimals.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

namespace desktop {

using Oid = std::uint32_t;

// Decimal, signed or not, or hexadecimal with 0x, within 32 bits; nothing for other text and for 0,
// which names no item.
std::optional<Oid> ParseOid(std::string_view text);

// As the attribute "Oid" has it.
inline std::string OidAttribute(Oid oid) {
  return std::to_string(static_cast<std::int32_t>(oid));
}

}  // namespace desktop
