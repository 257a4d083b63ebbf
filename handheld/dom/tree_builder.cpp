#include "handheld/dom/tree_builder.h"

#include <utility>

#include "common/text/unicode.h"
#include "common/text/xml_text.h"
#include "handheld/dom/nodes.h"

namespace ce::host::dom {
namespace {

// Text buffers beyond this are given back rather than kept for the next node.
constexpr std::size_t kLargeText = 16 * 1024;

std::u16string Wide(std::string_view utf8) {
  std::u16string text;
  if (!text::AppendFromUtf8(text, utf8)) throw TreeBuilder::BadDocument{};
  return text;
}

std::u16string QualifiedName(const char* prefix, const char* name) {
  return prefix ? Wide(prefix) + u':' + Wide(name) : Wide(name);
}

}  // namespace

void TreeBuilder::Charge(std::size_t bytes) {
  if (bytes > bytesLeft_) throw BadDocument{};
  bytesLeft_ -= bytes;
}

void TreeBuilder::ChargeNode(std::size_t size, std::string_view text) {
  Charge(size + sizeof(char16_t) * text::Utf16Length(text));
}

void TreeBuilder::Declaration(std::u16string target, std::u16string data) {
  Charge(sizeof(dom::Instruction) + sizeof(char16_t) * (target.size() + data.size()));
  Append(new dom::Instruction(&document_, std::move(target), std::move(data)));
}

void TreeBuilder::StartElement(const char* prefix, const char* name) {
  FlushText();
  if (++depth_ > maxDepth_) throw BadDocument{};
  if (prefix) Charge(sizeof(char16_t) * (text::Utf16Length(prefix) + 1));
  ChargeNode(sizeof(Element), name);
  auto* element = new Element(&document_, QualifiedName(prefix, name));
  Append(element);
  current_ = element;
}

void TreeBuilder::Attribute(const char* prefix, const char* name, std::string_view value) {
  if (prefix) Charge(sizeof(char16_t) * (text::Utf16Length(prefix) + 1));
  ChargeNode(sizeof(dom::Attribute), name);
  ChargeNode(0, value);
  static_cast<Element*>(current_)->AdoptAttribute(
      new dom::Attribute(&document_, QualifiedName(prefix, name), Wide(value)));
}

void TreeBuilder::EndElement() {
  FlushText();
  --depth_;
  current_ = current_->owner();
}

void TreeBuilder::Characters(std::string_view text) {
  ChargeNode(0, text);
  if (!text::AppendFromUtf8(text_, text)) throw BadDocument{};
}

void TreeBuilder::CdataSection(std::string_view text) {
  FlushText();
  ChargeNode(sizeof(Text), text);
  Append(new Text(NodeKind::kCdata, &document_, Wide(text)));
}

void TreeBuilder::Comment(const char* text) {
  FlushText();
  ChargeNode(sizeof(dom::Comment), text);
  Append(new dom::Comment(NodeKind::kComment, &document_, Wide(text)));
}

void TreeBuilder::Instruction(const char* target, const char* data) {
  FlushText();
  ChargeNode(sizeof(dom::Instruction), target);
  if (data) ChargeNode(0, data);
  Append(new dom::Instruction(&document_, Wide(target), Wide(data ? data : "")));
}

void TreeBuilder::FlushText() {
  if (text_.empty()) return;
  if (preserveWhiteSpace_ || !text::IsXmlSpace(text_)) {
    Charge(sizeof(Text));
    Append(new Text(NodeKind::kText, &document_, std::u16string(std::u16string_view(text_))));
  } else {
    bytesLeft_ += sizeof(char16_t) * text_.size();
  }
  text_.clear();
  if (text_.capacity() > kLargeText) text_.shrink_to_fit();
}

}  // namespace ce::host::dom
