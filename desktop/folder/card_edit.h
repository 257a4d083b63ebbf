// One card in which the lines that say a changed field are changed, and no other.
#pragma once

#include <chrono>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "common/formats/items/contact.h"
#include "desktop/folder/file_parts.h"
#include "desktop/folder/raw_line.h"

namespace desktop {

struct EditedPart {
  std::string text;
  std::vector<std::string> losses;  // "Children: cannot be said in this card"
};

// `lines` are those of the card in `text`, BEGIN and END among them. A line keeps its group, its
// name and its parameters where the card then reads right, and what says the same of the card in
// other words follows: FN the name, LABEL its address, REV the time of the edit. A value that had
// no place before may take one that has become free.
EditedPart EditCard(std::string_view text, std::span<const FileLine> lines,
                    const formats::Contact& to, const LineStyle& style,
                    std::chrono::sys_seconds when);

}  // namespace desktop
