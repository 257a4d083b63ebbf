#include "common/formats/lines/content_writer.h"

#include <algorithm>
#include <iterator>
#include <span>

#include "common/text/text.h"

namespace formats {
void AppendFolded(std::string& out, std::string_view line) {
  constexpr std::size_t kWidth = 75;
  // Neither form has a way to say them, and a terminal that shows the file would obey them.
  std::string clean;
  if (std::any_of(line.begin(), line.end(), text::IsControl)) {
    std::remove_copy_if(line.begin(), line.end(), std::back_inserter(clean), text::IsControl);
    line = clean;
  }
  std::size_t room = kWidth;
  while (line.size() > room) {
    std::size_t cut = room;
    while (cut > room - 4 && (line[cut] & 0xC0) == 0x80) --cut;
    if ((line[cut] & 0xC0) == 0x80) cut = room;  // no UTF-8
    out += line.substr(0, cut);
    out += "\r\n ";
    line.remove_prefix(cut);
    room = kWidth - 1;
  }
  out += line;
  out += "\r\n";
}

ContentValue& ContentValue::Add(std::string_view text) {
  for (std::size_t i = 0; i < text.size(); ++i) {
    const char c = text[i];
    if (c == '\n' || c == '\r') {
      const bool both = c == '\r' && text.substr(i + 1).starts_with('\n');
      if (both) ++i;
      breaks_.push_back(both ? "crlf" : c == '\r' ? "cr" : "lf");
      text_ += "\\n";
      continue;
    }
    if (specials_.find(c) != std::string_view::npos) text_ += '\\';
    text_ += c;
  }
  return *this;
}

std::string ContentValue::LineBreakParameter() const {
  std::span<const std::string_view> kinds(breaks_);
  while (kinds.size() > 1 && kinds[kinds.size() - 2] == kinds.back()) {
    kinds = kinds.first(kinds.size() - 1);
  }
  if (kinds.empty() || (kinds.size() == 1 && kinds.front() == "lf")) return {};
  std::string parameter = ";X-LINE-BREAKS=";
  for (std::size_t i = 0; i < kinds.size(); ++i) {
    if (i > 0) parameter += ',';
    parameter += kinds[i];
  }
  return parameter;
}

std::vector<ContentValue> CategoryValues(const std::vector<std::string>& names) {
  std::vector<ContentValue> values;
  bool lastIsAlone = true;
  for (const std::string& name : names) {
    const bool alone = text::TrimBlanks(name).size() != name.size();
    if (alone || lastIsAlone) {
      values.emplace_back();
    } else {
      values.back().Separate(',');
    }
    values.back().Add(name);
    lastIsAlone = alone;
  }
  return values;
}

}  // namespace formats
