// Where the content lines and the components of a vCard or iCalendar file stand in its text.
#pragma once

#include <cstddef>
#include <string>
#include <string_view>
#include <vector>

#include "common/formats/lines/vcard_lines.h"

namespace desktop {

// A content line with the bytes that it takes, those of its line ends among them. Empty lines
// behind it are none of it.
struct FileLine {
  formats::ContentLine content;
  std::size_t begin = 0;
  std::size_t end = 0;
  std::size_t depth = 0;  // how many parts it belongs to; a BEGIN and its END to their own too
};

inline constexpr std::size_t kNoPart = static_cast<std::size_t>(-1);

// What BEGIN and END enclose.
struct FilePart {
  std::string name;              // upper case
  std::size_t first = 0;         // the line of its BEGIN
  std::size_t last = 0;          // the line of its END
  std::size_t parent = kNoPart;  // the part around it
  bool whole = true;             // not without an END of its own
};

struct FileParts {
  std::vector<FileLine> lines;
  std::vector<FilePart> parts;  // in the order of their beginnings
};

FileParts FindParts(std::string_view text);

}  // namespace desktop
