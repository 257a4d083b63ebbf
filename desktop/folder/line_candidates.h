// How a line could be changed to say something else.
#pragma once

#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "common/formats/items/contact.h"
#include "desktop/folder/card_lines.h"
#include "desktop/folder/contact_differences.h"

namespace desktop {

// Takes away the lines that both have.
void RemoveCommon(std::vector<CanonicalLine>& gone, std::vector<CanonicalLine>& wanted);
// Takes away those that belong together: of one name and kind, or of one value.
std::vector<std::pair<CanonicalLine, CanonicalLine>> PairUp(std::vector<CanonicalLine>& gone,
                                                            std::vector<CanonicalLine>& wanted);

// The line with `gone` in it become `wanted`, from the smallest change to a new line.
std::vector<RawLine> CandidatesFor(const CardLine& line, const CanonicalLine& gone,
                                   const CanonicalLine& wanted);

struct Piece {
  std::optional<std::string> text;  // nothing when its line is to go
  bool changed = false;
};
// How lines that say a text together could say the wanted one: a piece a line.
std::vector<std::vector<Piece>> PiecesFor(const CardLines& lines, const CanonicalLine& wanted);

// The formatted name with what has changed of the name replaced in it; nothing when it does not
// have all of that.
std::optional<std::string> FollowName(std::string text, const formats::Contact& was,
                                      const formats::Contact& to);

std::string CategoryValue(const std::vector<std::string>& names);
bool IsBlankValue(std::string_view value);
// Whether a card may have one line of the upper-case name alone.
bool IsOnceOnly(std::string_view name);

}  // namespace desktop
