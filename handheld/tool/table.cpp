#include "handheld/tool/table.h"

#include <fmt/core.h>

#include <algorithm>

#include "common/terminal/screen.h"
#include "common/terminal/tally.h"
#include "common/terminal/width.h"
#include "common/text/text.h"

namespace tool {

std::string Column(std::string_view cell, std::size_t width) {
  // What a sender wrote may not tell the terminal what to do.
  std::string shown = text::Shown(cell);
  shown.erase(shown.find_last_not_of(' ') + 1);
  std::ranges::replace(shown, '\n', ' ');
  return terminal::Fitted(shown, width);
}

std::string Heading(std::string_view words, const Report& report) {
  return report.emphasises ? terminal::Emphasised(words) : std::string(words);
}

std::string Counted(std::size_t count, std::string_view name) {
  return fmt::format("{} {}{}", terminal::Grouped(count), name, count == 1 ? "" : "s");
}

}  // namespace tool
