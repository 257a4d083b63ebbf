#include "common/formats/lines/vcard_lines.h"

#include <algorithm>
#include <optional>
#include <vector>

#include "common/formats/lines/vcard_property.h"
#include "common/text/text.h"

namespace formats {
namespace {

constexpr auto kNowhere = std::string_view::npos;

bool IsMarker(std::string_view line, std::string_view name, std::string_view component) {
  if (line.starts_with("\xEF\xBB\xBF")) line.remove_prefix(3);  // of a file that was appended
  if (line.size() > 80 || !text::StartsWithNoCase(line, name)) return false;
  line = text::TrimBlanks(line.substr(name.size()));
  return line.starts_with(':') && text::EqualsNoCase(text::TrimBlanks(line.substr(1)), component);
}

bool StartsWithBlank(std::string_view line) {
  return line.starts_with(' ') || line.starts_with('\t');
}

// How a value is encoded whose property begins so, up to its colon.
TransferEncoding EncodingBehind(const std::string& header) {
  const std::string upper = text::ToUpperAscii(header);
  const bool mayHaveOne = upper.find("ENCODING") != kNowhere ||
                          upper.find("QUOTED-PRINTABLE") != kNowhere ||
                          upper.find("BASE64") != kNowhere;
  if (!mayHaveOne) return TransferEncoding::kNone;
  ContentLine line;
  line.text = header + ":";
  const std::optional<Property> property = ParseProperty(line);
  return property ? EncodingOf(*property) : TransferEncoding::kNone;
}

// Finds out, line by line, how a property's value is encoded: from what stands before the colon.
class HeaderScan {
 public:
  void Feed(std::string_view part) {
    if (done_) return;
    for (std::size_t i = 0; i < part.size(); ++i) {
      if (part[i] == '"') quoted_ = !quoted_;
      if (part[i] != ':' || quoted_) continue;
      header_ += part.substr(0, i);
      done_ = true;
      encoding_ = EncodingBehind(header_);
      return;
    }
    header_ += part;
  }
  TransferEncoding encoding() const { return encoding_; }

 private:
  std::string header_;
  bool quoted_ = false;
  bool done_ = false;
  TransferEncoding encoding_ = TransferEncoding::kNone;
};

// A property's line has no colon when it is folded before it, but most often a sign of its own.
bool IsBase64(std::string_view line) {
  constexpr std::string_view kSigns = "+/= \t";
  return !line.empty() && std::ranges::all_of(line, [&](char c) {
    return (c >= 'A' && c <= 'Z') || (c >= 'a' && c <= 'z') || (c >= '0' && c <= '9') ||
           kSigns.find(c) != kNowhere;
  });
}

// How many characters of the line's end are a soft line break: "=" and blanks behind it.
std::size_t SoftBreakLength(std::string_view line) {
  const std::size_t last = line.find_last_not_of(" \t");
  return last != kNowhere && line[last] == '=' ? line.size() - last : 0;
}

// Without the blank at each of the positions, when there is one at all of them.
void RemoveIndentation(const std::vector<std::size_t>& starts, std::string& text) {
  for (std::size_t start : starts) {
    if (start >= text.size() || (text[start] != ' ' && text[start] != '\t')) return;
  }
  std::size_t length = starts.empty() ? text.size() : starts.front();
  std::size_t next = 0;
  for (std::size_t i = length; i < text.size(); ++i) {
    if (next < starts.size() && starts[next] == i) {
      ++next;
    } else {
      text[length++] = text[i];
    }
  }
  text.resize(length);
}

}  // namespace

bool IsVCardBegin(std::string_view line) {
  return IsMarker(line, "BEGIN", "VCARD");
}
bool IsVCardEnd(std::string_view line) {
  return IsMarker(line, "END", "VCARD");
}

std::size_t LineEndLength(std::string_view text) {
  if (text.starts_with("\r\r\n")) return 3;
  return text.starts_with("\r\n") ? 2 : 1;
}

std::string_view ContentLineReader::Peek(std::size_t* next) const {
  const std::size_t end = text_.find_first_of("\r\n", position_);
  if (end == kNowhere) {
    *next = text_.size();
    return text_.substr(position_);
  }
  *next = end + LineEndLength(text_.substr(end));
  return text_.substr(position_, end - position_);
}

std::string_view ContentLineReader::Take() {
  std::size_t next = 0;
  const std::string_view line = Peek(&next);
  position_ = next;
  ++line_;
  return line;
}

// Looks ahead in the card that begins at the position, since the version may come after lines that
// are read by its rules.
VCardDialect ContentLineReader::FindDialect() const {
  ContentLineReader ahead(text_);
  ahead.position_ = position_;
  while (ahead.position_ < text_.size()) {
    const std::string_view line = ahead.Take();
    if (IsVCardBegin(line) || IsVCardEnd(line)) break;
    if (!text::StartsWithNoCase(line, "VERSION")) continue;
    const std::size_t colon = line.find(':');
    if (colon == kNowhere) continue;
    const std::string_view version = text::TrimBlanks(line.substr(colon + 1));
    if (version.starts_with("2")) return VCardDialect::k21;
    return version.starts_with("3") ? VCardDialect::k30 : VCardDialect::k40;
  }
  return VCardDialect::k30;
}

bool ContentLineReader::Next(ContentLine& out) {
  while (position_ < text_.size()) {
    const std::string_view line = Take();
    if (text::TrimBlanks(line).empty()) continue;
    out.line = line_;
    out.text = line;
    if (IsVCardBegin(line)) {
      dialect_ = FindDialect();
    } else {
      if (IsMarker(line, "BEGIN", "VCALENDAR")) dialect_ = VCardDialect::k30;
      JoinContinuations(line, out.text);
    }
    out.dialect = dialect_;
    return true;
  }
  return false;
}

void ContentLineReader::JoinContinuations(std::string_view last, std::string& out) {
  HeaderScan header;
  header.Feed(last);
  std::vector<std::size_t> softStarts;
  while (position_ < text_.size()) {
    std::size_t next = 0;
    const std::string_view line = Peek(&next);
    const TransferEncoding encoding = header.encoding();
    const bool quotedPrintable = encoding == TransferEncoding::kQuotedPrintable;
    const std::size_t softBreak = quotedPrintable ? SoftBreakLength(last) : 0;
    if (IsVCardBegin(line) || IsVCardEnd(line)) break;
    if (softBreak > 0) {
      out.resize(out.size() - softBreak);
      if (softStarts.empty() || softStarts.back() != out.size()) softStarts.push_back(out.size());
      out += line;
    } else if (StartsWithBlank(line)) {
      out += line.substr(dialect_ == VCardDialect::k21 ? 0 : 1);
      header.Feed(line.substr(1));
    } else if ((quotedPrintable && line.starts_with('=')) ||
               (encoding == TransferEncoding::kBase64 && IsBase64(line))) {
      out += line;
    } else {
      break;
    }
    last = line;
    Take();
  }
  RemoveIndentation(softStarts, out);
}

}  // namespace formats
