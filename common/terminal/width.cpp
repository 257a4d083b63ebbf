#include "common/terminal/width.h"

#include <utf8proc.h>

#include <algorithm>

namespace terminal {
namespace {

constexpr utf8proc_int32_t kReplacementCharacter = 0xFFFD;

bool IsPlain(std::string_view text) {
  return std::ranges::none_of(text, [](char c) { return (c & 0x80) != 0; });
}

// Takes the first character off a text that is not empty; a byte that is no UTF-8 counts as one.
utf8proc_int32_t TakeFirst(std::string_view& text) {
  utf8proc_int32_t character = 0;
  const utf8proc_ssize_t bytes =
      utf8proc_iterate(reinterpret_cast<const utf8proc_uint8_t*>(text.data()),
                       static_cast<utf8proc_ssize_t>(text.size()), &character);
  if (bytes <= 0) character = kReplacementCharacter;
  text.remove_prefix(bytes <= 0 ? 1 : static_cast<std::size_t>(bytes));
  return character;
}

std::size_t CellsOf(utf8proc_int32_t character) {
  // What stands below or behind the first letter of a Korean syllable is within its two cells.
  const auto kind = utf8proc_get_property(character)->boundclass;
  if (kind == UTF8PROC_BOUNDCLASS_V || kind == UTF8PROC_BOUNDCLASS_T) return 0;
  return static_cast<std::size_t>(std::max(utf8proc_charwidth(character), 0));
}

// What is left of the text when it does not fit, by bytes; all of it when it does.
std::size_t KeptOf(std::string_view text, std::size_t width) {
  std::size_t kept = 0;
  std::size_t cells = 0;
  utf8proc_int32_t before = 0;
  utf8proc_int32_t state = 0;
  for (std::string_view left = text; !left.empty();) {
    const std::size_t at = text.size() - left.size();
    const utf8proc_int32_t character = TakeFirst(left);
    const bool begins = at == 0 || utf8proc_grapheme_break_stateful(before, character, &state);
    if (begins && cells < width) kept = at;
    cells += CellsOf(character);
    if (cells > width) return kept;
    before = character;
  }
  return text.size();
}

}  // namespace

std::size_t WidthOf(std::string_view utf8) {
  if (IsPlain(utf8)) return utf8.size();
  std::size_t width = 0;
  while (!utf8.empty()) width += CellsOf(TakeFirst(utf8));
  return width;
}

std::string Cut(std::string_view utf8, std::size_t width) {
  if (utf8.size() <= width && IsPlain(utf8)) return std::string(utf8);
  if (width == 0) return {};
  const std::size_t kept = KeptOf(utf8, width);
  return std::string(utf8.substr(0, kept)) + (kept < utf8.size() ? "…" : "");
}

std::string Fitted(std::string_view utf8, std::size_t width) {
  std::string fitted = Cut(utf8, width);
  fitted.append(width - WidthOf(fitted), ' ');
  return fitted;
}

}  // namespace terminal
