#include "desktop/folder/card_lines.h"

#include <algorithm>
#include <utility>

#include "common/text/text.h"

namespace desktop {
namespace {

using formats::Contact;

constexpr std::string_view kLabel = "X-ABLABEL";
constexpr std::size_t kLongLine = 200;
constexpr const char* kVersions[] = {"2.1", "3.0", "4.0"};
constexpr const char* kOfTheOldValue[] = {"ENCODING",  "CHARSET", "QUOTED-PRINTABLE", "BASE64",
                                          "8BIT",      "7BIT",    "X-LINE-BREAKS",    "DERIVED",
                                          "X-DERIVED", "LABEL"};

Contact ReadCard(std::string_view inner) {
  formats::VCardFile file = formats::ReadVCards(inner);
  return file.contacts.empty() ? Contact() : std::move(file.contacts.front().contact);
}

std::string Framed(formats::VCardDialect dialect, std::string_view inner) {
  std::string card = "BEGIN:VCARD\r\nVERSION:";
  card += kVersions[static_cast<std::size_t>(dialect)];
  card += "\r\n";
  // A card's first line may begin with a blank and continues nothing.
  if (inner.starts_with(' ') || inner.starts_with('\t')) card += "\r\n";
  card += inner;
  if (!inner.ends_with('\n') && !inner.ends_with('\r')) card += "\r\n";
  return card += "END:VCARD\r\n";
}

}  // namespace

CardReading::CardReading(std::string_view text, std::span<const FileLine> lines, LineStyle style)
    : style_(std::move(style)) {
  if (!lines.empty()) style_.dialect = lines.front().content.dialect;
  for (const FileLine& line : lines) {
    const std::optional<formats::Property> property = formats::ParseProperty(line.content);
    if (!property || property->name != kLabel || property->group.empty()) continue;
    labels_.emplace_back(property->group, text.substr(line.begin, line.end - line.begin));
  }
  std::size_t depth = 0;
  std::size_t end = lines.empty() ? 0 : lines.front().begin;
  for (const FileLine& line : lines) {
    if (line.begin > end) AddGap(std::string(text.substr(end, line.begin - end)));
    end = line.end;
    if (formats::IsVCardBegin(line.content.text)) ++depth;
    lines_.push_back(
        Make(std::string(text.substr(line.begin, end - line.begin)), line.content, depth > 1));
    if (formats::IsVCardEnd(line.content.text)) --depth;
  }
}

void CardReading::AddGap(std::string bytes) {
  auto gap = std::make_shared<CardLine>();
  gap->bytes = std::move(bytes);
  gap->foreign = true;
  lines_.push_back(std::move(gap));
}

formats::VCardVersion CardReading::version() const {
  return style_.dialect == formats::VCardDialect::k40 ? formats::VCardVersion::k40
                                                      : formats::VCardVersion::k30;
}

CardLineRef CardReading::Make(std::string bytes, formats::ContentLine content, bool within) const {
  auto line = std::make_shared<CardLine>();
  line->bytes = std::move(bytes);
  line->content = std::move(content);
  line->foreign = within;
  const bool frame =
      formats::IsVCardBegin(line->content.text) || formats::IsVCardEnd(line->content.text);
  if (within || frame) return line;
  line->property = formats::ParseProperty(line->content);
  std::string inner = line->bytes;
  if (line->property && line->property->name != kLabel) {
    for (const auto& [group, label] : labels_) {
      if (group == line->property->group) inner += label;
    }
  }
  line->alone = ReadCard(Framed(style_.dialect, inner));
  line->alone.uid.clear();
  const bool silent = line->alone == Contact();
  if (!silent) line->says = CanonicalLines(line->alone, version());
  const bool agent = line->property && line->property->name == "AGENT";
  line->foreign = silent && (agent || line->bytes.size() > kLongLine);
  return line;
}

CardLineRef CardReading::Compose(const RawLine& raw) const {
  std::string bytes = desktop::BytesOf(raw, style_);
  const FileParts parts = FindParts(Framed(style_.dialect, bytes));
  return Make(std::move(bytes),
              parts.lines.size() > 2 ? parts.lines[2].content : formats::ContentLine(), false);
}

RawLine CardReading::Spelled(const CardLine& line) {
  RawLine raw = RawLine::Of(line.content.text);
  for (const char* parameter : kOfTheOldValue) raw.DropParameter(parameter);
  // A number is a text from then on.
  if (raw.Is("TEL")) raw.DropParameter("VALUE");
  raw.value.clear();
  for (const char c : line.property ? line.property->value : std::string()) {
    if (c == '\n') {
      raw.value += "\\n";
    } else {
      raw.value += c;
    }
  }
  return raw;
}

Contact CardReading::Read(const CardLines& lines) {
  std::string card;
  for (const CardLineRef& line : lines) {
    // What stands behind a line that is left out does not continue the one before it, though that
    // ends in a CR.
    card += line->foreign ? "\n\n" : line->bytes;
  }
  Contact contact = ReadCard(card);
  contact.uid.clear();
  return contact;
}

std::string CardReading::BytesOf(const CardLines& lines) {
  std::string bytes;
  for (const CardLineRef& line : lines) bytes += line->bytes;
  return bytes;
}

}  // namespace desktop
