// A content line taken apart as it was spelled, and written in the manner of the lines around it.
#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "common/formats/lines/vcard_lines.h"

namespace desktop {

struct RawLine {
  std::string group;                    // empty for none
  std::string name;                     // as it is spelled
  std::vector<std::string> parameters;  // "TYPE=CELL", or a bare word of 2.1
  std::string value;                    // escaped, as vCard 3.0 and iCalendar do

  // Takes an unfolded line apart.
  static RawLine Of(std::string_view line);
  // Whether it has this upper-case name, whatever its group.
  bool Is(std::string_view upper) const;
  bool HasParameter(std::string_view upper) const;
  void DropParameter(std::string_view upper);
};

// How the lines of a file are written.
struct LineStyle {
  std::string lineEnd = "\r\n";
  formats::VCardDialect dialect = formats::VCardDialect::k30;
  bool western = false;  // what is not ASCII is Windows-1252, where that can say it
};

// The style of a text's lines, but for the dialect.
LineStyle StyleOf(std::string_view text);

// The line's bytes, folded, its line end behind. In 2.1 parameters lose their names where it has
// none, and a value that needs it becomes quoted-printable.
std::string BytesOf(const RawLine& line, const LineStyle& style);

}  // namespace desktop
