#include "handheld/dom/tree_builder.h"

#include <algorithm>
#include <cstdint>

#include "common/text/unicode.h"
#include "common/text/xml_text.h"

namespace ce::host::dom {

void TreeBuilder::Charge(std::size_t bytes) const {
  if (bytes > maxBytes_ || tape_.bytes() > maxBytes_ - bytes) throw BadDocument{};
}

Tape::Cell TreeBuilder::Add(NodeKind kind, Tape::Place text, Tape::Place second) {
  Charge(Tape::kCellBytes);
  return tape_.Add(kind, text, second);
}

void TreeBuilder::Append(std::string_view text) {
  if (!text::IsValidUtf8(text)) throw BadDocument{};
  const std::size_t units = text::Utf16Length(text);
  Charge((units + 1) * sizeof(char16_t));
  text::DecodeWtf8(text, tape_.ExtendText(units));
}

void TreeBuilder::Append(std::u16string_view text) {
  Charge((text.size() + 1) * sizeof(char16_t));
  std::copy(text.begin(), text.end(), tape_.ExtendText(text.size()));
}

Tape::Place TreeBuilder::Keep(std::string_view text) {
  const Tape::Place place = tape_.Here();
  Append(text);
  tape_.EndText();
  return place;
}

Tape::Place TreeBuilder::Keep(std::u16string_view text) {
  const Tape::Place place = tape_.Here();
  Append(text);
  tape_.EndText();
  return place;
}

Tape::Place TreeBuilder::KeepName(const char* prefix, const char* name) {
  // The parser has each name in one place.
  const auto mixed =
      reinterpret_cast<std::uintptr_t>(name) * 31 + reinterpret_cast<std::uintptr_t>(prefix) * 17;
  KnownPlace& known = names_[(mixed >> 3 ^ mixed >> 12) % names_.size()];
  if (known.name == name && known.prefix == prefix) return known.place;
  const Tape::Place place = tape_.Here();
  if (prefix) {
    Append(std::string_view(prefix));
    Append(u":");
  }
  Append(std::string_view(name));
  tape_.EndText();
  known = {prefix, name, place};
  return place;
}

void TreeBuilder::Declaration(std::u16string_view target, std::u16string_view data) {
  const Tape::Place kept = Keep(target);
  Add(NodeKind::kInstruction, kept, Keep(data));
}

void TreeBuilder::StartElement(const char* prefix, const char* name) {
  FlushText();
  if (open_.size() >= static_cast<std::size_t>(maxDepth_)) throw BadDocument{};
  open_.push_back(Add(NodeKind::kElement, KeepName(prefix, name)));
}

void TreeBuilder::Attribute(const char* prefix, const char* name, std::string_view value) {
  const Tape::Place kept = KeepName(prefix, name);
  Add(NodeKind::kAttribute, kept, Keep(value));
}

void TreeBuilder::EndElement() {
  FlushText();
  tape_.End(open_.back());
  open_.pop_back();
}

void TreeBuilder::Characters(std::string_view text) {
  if (!inText_) text_ = tape_.Here();
  inText_ = true;
  Append(text);
}

void TreeBuilder::CdataSection(std::string_view text) {
  FlushText();
  Add(NodeKind::kCdata, Keep(text));
}

void TreeBuilder::Comment(const char* text) {
  FlushText();
  Add(NodeKind::kComment, Keep(std::string_view(text)));
}

void TreeBuilder::Instruction(const char* target, const char* data) {
  FlushText();
  const Tape::Place kept = Keep(std::string_view(target));
  Add(NodeKind::kInstruction, kept, Keep(std::string_view(data ? data : "")));
}

void TreeBuilder::FlushText() {
  if (!inText_) return;
  inText_ = false;
  const std::u16string_view text = tape_.TextFrom(text_);
  if (text.empty() || (!preserveWhiteSpace_ && text::IsXmlSpace(text))) {
    tape_.CutText(text_);
    return;
  }
  tape_.EndText();
  Add(NodeKind::kText, text_);
}

}  // namespace ce::host::dom
