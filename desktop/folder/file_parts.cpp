#include "desktop/folder/file_parts.h"

#include <optional>
#include <utility>

#include "common/formats/lines/vcard_property.h"
#include "common/text/text.h"

namespace desktop {
namespace {

constexpr std::size_t kLongestMarker = 200;

// Where each physical line begins, and the end of the text.
std::vector<std::size_t> LineBegins(std::string_view text) {
  std::vector<std::size_t> begins = {0};
  for (std::size_t i = text.find_first_of("\r\n"); i != std::string_view::npos;
       i = text.find_first_of("\r\n", i)) {
    i += formats::LineEndLength(text.substr(i));
    if (i < text.size()) begins.push_back(i);
  }
  begins.push_back(text.size());
  return begins;
}

bool IsEmptyLine(std::string_view line) {
  return line.find_first_not_of(" \t\r\n") == std::string_view::npos;
}

// Whether the line's value is quoted-printable and goes on behind the last of its physical lines.
bool EndsSoftly(const formats::ContentLine& line, std::string_view last) {
  const std::size_t end = last.find_last_not_of(" \t\r\n");
  if (end == std::string_view::npos || last[end] != '=') return false;
  const std::optional<formats::Property> property = formats::ParseProperty(line);
  return property && EncodingOf(*property) == formats::TransferEncoding::kQuotedPrintable;
}

// The name behind "BEGIN:", in upper case; empty for another line.
std::string MarkedPart(std::string_view line, std::string_view marker) {
  if (line.starts_with("\xEF\xBB\xBF")) line.remove_prefix(3);  // of a file that was appended
  if (line.size() > kLongestMarker || !text::StartsWithNoCase(line, marker)) return {};
  line = text::TrimBlanks(line.substr(marker.size()));
  if (!line.starts_with(':')) return {};
  return text::ToUpperAscii(text::TrimBlanks(line.substr(1)));
}

bool IsItemPart(std::string_view name) {
  return name == "VEVENT" || name == "VTODO" || name == "VTIMEZONE";
}

class PartFinder {
 public:
  explicit PartFinder(FileParts& file) : file_(file) {}

  void Take(std::size_t line) {
    const std::string_view text = file_.lines[line].content.text;
    if (const std::string begun = MarkedPart(text, "BEGIN"); !begun.empty()) Begin(line, begun);
    file_.lines[line].depth = open_.size();
    if (const std::string ended = MarkedPart(text, "END"); !ended.empty()) End(line, ended);
    const std::string_view name = text.substr(0, text.find_first_of(":;"));
    agentBefore_ = text::EqualsNoCase(name, "AGENT") && text.ends_with(':');
  }

  void Finish() { CloseTo(0, file_.lines.size()); }

 private:
  // No item is within another one, but for an agent's card.
  void Begin(std::size_t line, const std::string& name) {
    for (std::size_t depth = 0; depth < open_.size(); ++depth) {
      const std::string& around = file_.parts[open_[depth]].name;
      const bool ends = name == "VCALENDAR" || (IsItemPart(name) && IsItemPart(around)) ||
                        (name == "VCARD" && around == "VCARD" && !agentBefore_);
      if (ends) CloseTo(depth, line);
    }
    const std::size_t parent = open_.empty() ? kNoPart : open_.back();
    open_.push_back(file_.parts.size());
    file_.parts.push_back({name, line, line, parent});
  }

  void End(std::size_t line, const std::string& name) {
    for (std::size_t depth = open_.size(); depth > 0; --depth) {
      FilePart& part = file_.parts[open_[depth - 1]];
      if (part.name != name) continue;
      CloseTo(depth, line);
      part.last = line;
      file_.lines[line].depth = depth;
      open_.pop_back();
      return;
    }
  }

  void CloseTo(std::size_t depth, std::size_t before) {
    for (; open_.size() > depth; open_.pop_back()) {
      FilePart& part = file_.parts[open_.back()];
      part.whole = false;
      part.last = before - 1;
    }
  }

  FileParts& file_;
  std::vector<std::size_t> open_;
  bool agentBefore_ = false;
};

}  // namespace

FileParts FindParts(std::string_view text) {
  FileParts file;
  const std::vector<std::size_t> begins = LineBegins(text);
  formats::ContentLineReader reader(text);
  FileLine line;
  while (reader.Next(line.content)) {
    line.begin = begins[line.content.line - 1];
    file.lines.push_back(line);
  }
  for (std::size_t i = 0; i < file.lines.size(); ++i) {
    const std::size_t first = file.lines[i].content.line - 1;
    std::size_t after =
        i + 1 < file.lines.size() ? file.lines[i + 1].content.line - 1 : begins.size() - 1;
    const std::size_t next = after;
    const auto physical = [&](std::size_t n) {
      return text.substr(begins[n], begins[n + 1] - begins[n]);
    };
    while (after > first + 1 && IsEmptyLine(physical(after - 1))) --after;
    // An empty line is what a soft line break joins to the one before it.
    if (after < next && EndsSoftly(file.lines[i].content, physical(after - 1))) ++after;
    file.lines[i].end = begins[after];
  }
  PartFinder finder(file);
  for (std::size_t i = 0; i < file.lines.size(); ++i) finder.Take(i);
  finder.Finish();
  return file;
}

}  // namespace desktop
