#include "handheld/tool/table.h"

#include <fmt/core.h>

#include <algorithm>

namespace tool {

namespace {

bool StartsCharacter(char byte) {
  return (static_cast<unsigned char>(byte) & 0xC0) != 0x80;
}

// What a sender wrote may not tell the terminal what to do.
bool IsControl(char byte) {
  return static_cast<unsigned char>(byte) < 0x20 || byte == 0x7F;
}

}  // namespace

std::string Column(std::string_view text, std::size_t width) {
  text = text.substr(0, text.find_last_not_of(' ') + 1);
  const auto characters =
      static_cast<std::size_t>(std::count_if(text.begin(), text.end(), StartsCharacter));
  std::string column;
  std::size_t taken = 0;
  for (const char byte : text) {
    if (StartsCharacter(byte) && characters > width && taken + 1 == width) {
      column += "…";
      ++taken;
      break;
    }
    taken += StartsCharacter(byte);
    column += IsControl(byte) ? ' ' : byte;
  }
  return column + std::string(width - std::min(width, taken), ' ');
}

std::string Counted(std::size_t count, std::string_view name) {
  return fmt::format("{} {}{}", count, name, count == 1 ? "" : "s");
}

}  // namespace tool
