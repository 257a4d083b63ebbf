#include "common/formats/vcard/overflow_block.h"

#include <algorithm>
#include <optional>
#include <set>
#include <utility>

#include "common/formats/lines/content_writer.h"
#include "common/formats/vcard/contact_slots.h"
#include "common/formats/vcard/vcard_rules.h"
#include "common/text/text.h"

namespace formats {
namespace {

constexpr std::string_view kBegin = "--- vCard lines without a field of their own ---";
constexpr std::string_view kEnd = "--- end of vCard lines ---";

// Numbers are written under one name, whatever theirs was; its type says what that did.
std::string_view WrittenName(const Property& property) {
  const bool isPhone = FindPropertyRule(property.name).kind == PropertyKind::kPhone;
  return isPhone ? std::string_view("TEL") : std::string_view(property.name);
}

// Of how a value was written, and of its place among others.
bool IsOfTheCard(std::string_view parameter) {
  for (const std::string_view name : {"PREF", "ENCODING", "CHARSET", "X-LINE-BREAKS", "X-SLOT"})
    if (parameter == name) return true;
  return parameter == kKeptAs;
}

bool IsName(std::string_view text) {
  return text.find_first_not_of("ABCDEFGHIJKLMNOPQRSTUVWXYZ0123456789-") == text.npos;
}

// RFC 6868 says what stands for a quotation mark.
std::string ParameterText(std::string_view value) {
  std::string text;
  for (const char c : value) {
    if (c == '^' || c == '"')
      text += c == '^' ? "^^" : "^'";
    else if (!text::IsControl(c))
      text += c;
  }
  const bool isExact = text::TrimBlanks(text).size() == text.size();
  return isExact && text.find_first_of(":;,") == text.npos ? text : '"' + text + '"';
}

// Each word that is not yet known.
void AddTypes(std::string_view words, std::set<std::string>& known, Property& property) {
  for (const std::string_view word : SplitValue(words, ',')) {
    const std::string_view type = text::TrimBlanks(word);
    if (type.empty() || text::EqualsNoCase(type, "PREF")) continue;
    if (known.insert(text::ToUpperAscii(type)).second)
      property.parameters.emplace_back("TYPE", type);
  }
}

// As it stands in the block. What has slots is written as one has it, with its types alone; what
// has none keeps all that does not belong to its card.
Property Written(const Property& property, std::string value) {
  const bool isForNote = FindPropertyRule(property.name).kind == PropertyKind::kForNote;
  Property written;
  written.line = property.line;
  written.name = WrittenName(property);
  written.label = OwnLabelOf(property);
  written.value = std::move(value);
  std::set<std::string> types;
  for (const auto& [name, text] : property.parameters) {
    if (name == "TYPE")
      AddTypes(text, types, written);
    else if (isForNote && !IsOfTheCard(name) && IsName(name))
      written.parameters.emplace_back(name, text);
  }
  if (!isForNote && MustBeExact(written.value)) written.parameters.emplace_back("VALUE", "text");
  return written;
}

std::optional<ContactField> SlotNamed(std::string_view name) {
  for (std::size_t i = 0; i < kContactFieldCount; ++i) {
    const auto field = static_cast<ContactField>(i);
    if (ContactFieldName(field) == name) return field;
  }
  return std::nullopt;
}

// Takes the next line off, with its end in any form.
std::string_view TakeLine(std::string_view& text) {
  const std::size_t end = std::min(text.find_first_of("\r\n"), text.size());
  const std::string_view line = text.substr(0, end);
  text.remove_prefix(end);
  if (text.starts_with("\r\n")) text.remove_prefix(1);
  if (!text.empty()) text.remove_prefix(1);
  return line;
}

// Where the last line of this text begins; npos for none.
std::size_t FindLine(std::string_view text, std::string_view wanted) {
  for (std::size_t at = text.rfind(wanted); at != text.npos;
       at = at == 0 ? text.npos : text.rfind(wanted, at - 1)) {
    const std::size_t end = at + wanted.size();
    const bool begins = at == 0 || text[at - 1] == '\n' || text[at - 1] == '\r';
    if (begins && (end == text.size() || text[end] == '\n' || text[end] == '\r')) return at;
  }
  return text.npos;
}

void DropLineEnd(std::string_view& text) {
  if (text.ends_with("\r\n"))
    text.remove_suffix(2);
  else if (text.ends_with('\n') || text.ends_with('\r'))
    text.remove_suffix(1);
}

}  // namespace

OverflowBlock OverflowBlock::TakeFrom(std::string& note, std::size_t line) {
  const std::size_t begin = FindLine(note, kBegin);
  if (begin == note.npos) return {};
  std::string_view rest = std::string_view(note).substr(begin);
  TakeLine(rest);
  std::vector<Property> properties;
  std::map<std::string, std::string> labels;  // by their groups
  bool isWhole = false;
  while (!isWhole && !rest.empty()) {
    const std::string_view text = TakeLine(rest);
    isWhole = text == kEnd;
    if (isWhole) break;
    std::optional<Property> property =
        ParseProperty({.line = line, .dialect = VCardDialect::k30, .text = std::string(text)});
    if (!property) return {};
    if (property->name == "X-ABLABEL")
      labels.emplace(property->group, TextOf(*property));
    else
      properties.push_back(*std::move(property));
  }
  if (!isWhole) return {};
  OverflowBlock block;
  for (Property& property : properties) {
    if (const auto label = labels.find(property.group);
        !property.group.empty() && label != labels.end())
      property.label = label->second;
    if (!block.Take(property)) return {};
  }
  std::string_view before = std::string_view(note).substr(0, begin);
  DropLineEnd(before);
  DropLineEnd(before);
  std::string without(before);
  if (!rest.empty()) {
    if (!without.empty()) without += '\n';
    without += rest;
  }
  note = std::move(without);
  return block;
}

bool OverflowBlock::Take(const Property& property) {
  const PropertyKind kind = FindPropertyRule(property.name).kind;
  if (const std::string* const name = property.Parameter(kKeptAs)) {
    const std::optional<ContactField> slot = SlotNamed(*name);
    const bool isOfSlot = kind == PropertyKind::kPhone || kind == PropertyKind::kEmail ||
                          kind == PropertyKind::kAddress || kind == PropertyKind::kWebPage;
    if (!slot || !isOfSlot) return false;
    Describe(*slot, property, property.value);
    return true;
  }
  if (kind != PropertyKind::kPhone && kind != PropertyKind::kEmail &&
      kind != PropertyKind::kForNote) {
    return false;
  }
  Add(property, property.value);
  return true;
}

void OverflowBlock::Add(const Property& property, std::string value) {
  Property written = Written(property, std::move(value));
  if (!written.value.empty() && known_.insert(written.name + ":" + written.value).second)
    lines_.push_back(std::move(written));
}

void OverflowBlock::Describe(ContactField slot, const Property& property, std::string value) {
  if (value.find_first_not_of(';') == value.npos) return;  // a card does not say it
  Property written = Written(property, std::move(value));
  written.parameters.emplace_back(kKeptAs, ContactFieldName(slot));
  descriptions_.emplace(slot, std::move(written));
}

const Property* OverflowBlock::Find(ContactField slot, std::string_view value) const {
  const auto found = descriptions_.find(slot);
  return found != descriptions_.end() && found->second.value == value ? &found->second : nullptr;
}

void OverflowBlock::AppendTo(std::string& note) const {
  if (lines_.empty() && descriptions_.empty()) return;
  if (!note.empty()) note += "\n\n";
  note += kBegin;
  note += '\n';
  int groups = 0;
  const auto append = [&](const Property& property) {
    const std::string group =
        property.label.empty() ? std::string() : "item" + std::to_string(++groups) + ".";
    note += group + HeadOf(property) + ":" + property.value + '\n';
    if (!group.empty())
      note += group + "X-ABLabel:" + ContentValue().Add(property.label).text() + '\n';
  };
  for (const auto& [slot, property] : descriptions_) append(property);
  std::ranges::for_each(lines_, append);
  note += kEnd;
}

std::string OwnLabelOf(const Property& property) {
  std::string label = text::OnOneLine(property.label);
  return FindLabelTypes(label) == nullptr ? label : std::string();
}

std::string HeadOf(const Property& property) {
  std::string head = property.name;
  std::string types;
  std::string others;
  for (const auto& [name, text] : property.parameters) {
    if (name == "TYPE")
      types += (types.empty() ? ";TYPE=" : ",") + ParameterText(text);
    else
      others += ";" + name + "=" + ParameterText(text);
  }
  return head + types + others;
}

}  // namespace formats
