#include "handheld/dom/tree_builder.h"

#include "common/text/unicode.h"
#include "common/text/xml_text.h"
#include "handheld/dom/nodes.h"

namespace ce::host::dom {
namespace {

// Text buffers beyond this are given back rather than kept for the next node.
constexpr std::size_t kLargeText = 16 * 1024;

void Decode(std::string_view utf8, std::u16string& text) {
  if (!text::AppendFromUtf8(text, utf8)) throw TreeBuilder::BadDocument{};
}

void Empty(std::u16string& text) {
  text.clear();
  if (text.capacity() > kLargeText) text.shrink_to_fit();
}

}  // namespace

void TreeBuilder::Charge(std::size_t bytes) {
  if (bytes > bytesLeft_) throw BadDocument{};
  bytesLeft_ -= bytes;
}

void TreeBuilder::ChargeNode(std::size_t size, std::string_view text) {
  Charge(size + sizeof(char16_t) * text::Utf16Length(text));
}

std::u16string_view TreeBuilder::Keep(std::string_view text) {
  Empty(decoded_);
  Decode(text, decoded_);
  return document_.arena().Keep(decoded_);
}

Name TreeBuilder::KeepName(const char* prefix, const char* name) {
  Empty(decoded_);
  if (prefix) {
    Decode(prefix, decoded_);
    decoded_ += u':';
  }
  Decode(name, decoded_);
  return {document_.arena().Keep(decoded_)};
}

void TreeBuilder::Declaration(std::u16string_view target, std::u16string_view data) {
  Charge(sizeof(dom::Instruction) + sizeof(char16_t) * (target.size() + data.size()));
  Arena& arena = document_.arena();
  Append(new (document_) dom::Instruction(&document_, arena.Keep(target), arena.Keep(data)));
}

void TreeBuilder::StartElement(const char* prefix, const char* name) {
  FlushText();
  if (++depth_ > maxDepth_) throw BadDocument{};
  if (prefix) Charge(sizeof(char16_t) * (text::Utf16Length(prefix) + 1));
  ChargeNode(sizeof(Element), name);
  auto* element = new (document_) Element(&document_, KeepName(prefix, name));
  Append(element);
  current_ = element;
}

void TreeBuilder::Attribute(const char* prefix, const char* name, std::string_view value) {
  if (prefix) Charge(sizeof(char16_t) * (text::Utf16Length(prefix) + 1));
  ChargeNode(sizeof(dom::Attribute), name);
  ChargeNode(0, value);
  const Name keptName = KeepName(prefix, name);
  static_cast<Element*>(current_)->AdoptAttribute(
      new (document_) dom::Attribute(&document_, keptName, Keep(value)));
}

void TreeBuilder::EndElement() {
  FlushText();
  --depth_;
  current_ = current_->owner();
}

void TreeBuilder::Characters(std::string_view text) {
  ChargeNode(0, text);
  Decode(text, text_);
}

void TreeBuilder::CdataSection(std::string_view text) {
  FlushText();
  ChargeNode(sizeof(Text), text);
  Append(new (document_) Text(NodeKind::kCdata, &document_, Keep(text)));
}

void TreeBuilder::Comment(const char* text) {
  FlushText();
  ChargeNode(sizeof(dom::Comment), text);
  Append(new (document_) dom::Comment(NodeKind::kComment, &document_, Keep(text)));
}

void TreeBuilder::Instruction(const char* target, const char* data) {
  FlushText();
  ChargeNode(sizeof(dom::Instruction), target);
  if (data) ChargeNode(0, data);
  const std::u16string_view keptTarget = Keep(target);
  Append(new (document_) dom::Instruction(&document_, keptTarget, Keep(data ? data : "")));
}

void TreeBuilder::FlushText() {
  if (text_.empty()) return;
  if (preserveWhiteSpace_ || !text::IsXmlSpace(text_)) {
    Charge(sizeof(Text));
    Append(new (document_) Text(NodeKind::kText, &document_, document_.arena().Keep(text_)));
  } else {
    bytesLeft_ += sizeof(char16_t) * text_.size();
  }
  Empty(text_);
}

}  // namespace ce::host::dom
