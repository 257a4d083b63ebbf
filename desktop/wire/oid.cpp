#include "desktop/wire/oid.h"

#include <charconv>

namespace desktop {

std::optional<Oid> ParseOid(std::string_view text) {
  int base = 10;
  if (text.starts_with("0x") || text.starts_with("0X")) {
    base = 16;
    text.remove_prefix(2);
    if (text.starts_with('-')) return std::nullopt;
  }
  std::int64_t value = 0;
  const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), value, base);
  if (error != std::errc{} || end != text.data() + text.size()) return std::nullopt;
  if (value == 0 || value < INT32_MIN || value > std::int64_t{UINT32_MAX}) return std::nullopt;
  return static_cast<Oid>(value);
}

}  // namespace desktop
