#include "handheld/tool/table.h"

#include <fmt/core.h>

#include <algorithm>

#include "common/terminal/tally.h"
#include "common/text/text.h"

namespace tool {

namespace {

bool StartsCharacter(char byte) {
  return (static_cast<unsigned char>(byte) & 0xC0) != 0x80;
}

}  // namespace

std::string Column(std::string_view cell, std::size_t width) {
  // What a sender wrote may not tell the terminal what to do.
  const std::string shown = text::Shown(cell);
  const std::string_view text = std::string_view(shown).substr(0, shown.find_last_not_of(' ') + 1);
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
    column += byte == '\n' ? ' ' : byte;
  }
  return column + std::string(width - std::min(width, taken), ' ');
}

std::string Counted(std::size_t count, std::string_view name) {
  return fmt::format("{} {}{}", terminal::Grouped(count), name, count == 1 ? "" : "s");
}

}  // namespace tool
