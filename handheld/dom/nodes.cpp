#include "handheld/dom/nodes.h"

#include "handheld/base/guarded.h"

namespace ce::host::dom {

HRESULT Attribute::put_value(VARIANT value) {
  return Guarded("IXMLDOMAttribute::put_value", [&] {
    if (value.vt != VT_BSTR) return E_INVALIDARG;
    if (owner()) owner()->LeaveTape();
    value_ = document().arena().Keep(methods::View(value.bstrVal));
    return S_OK;
  });
}

void Element::TakeAttributes() {
  const Tape* const from = tape();
  if (!from || attributesTaken_) return;
  Tape::Cell attribute = from->FirstAttribute(cell());
  for (; attribute != Tape::kNone; attribute = from->NextAttribute(attribute)) {
    Adopt(attributes_, MakeNode(document(), *from, attribute));
  }
  attributesTaken_ = true;
}

bool Element::AttributesAreHeld() const {
  for (const Node* node = attributes_.first; node; node = node->next()) {
    if (!node->IsHeldInside()) return true;
  }
  return false;
}

Node* Element::FindAttribute(std::u16string_view name) {
  TakeAttributes();
  for (Node* node = attributes_.first; node; node = node->next()) {
    if (node->Name() == name) return node;
  }
  return nullptr;
}

HRESULT Element::SetAttribute(Node& attribute) {
  if (attribute.kind() != NodeKind::kAttribute) return E_INVALIDARG;
  if (attribute.owner() == this) return S_OK;
  if (attribute.owner() || &attribute.document() != &document()) return E_INVALIDARG;
  LeaveTape();
  if (Node* old = FindAttribute(attribute.Name())) Disown(attributes_, old);
  Share(attributes_, &attribute);
  return S_OK;
}

HRESULT AttributeMap::getNamedItem(BSTR name, IXMLDOMNode** item) {
  return Guarded("IXMLDOMNamedNodeMap::getNamedItem", item, [&] {
    return methods::HandOut(element_->FindAttribute(methods::View(name)), item);
  });
}

HRESULT AttributeMap::setNamedItem(IXMLDOMNode* newItem, IXMLDOMNode** nameItem) {
  if (nameItem) *nameItem = nullptr;
  return Guarded("IXMLDOMNamedNodeMap::setNamedItem", [&] {
    Node* node = nullptr;
    RETURN_IF_FAILED(NodeBehind(newItem, &node));
    RETURN_IF_FAILED(element_->SetAttribute(*node));
    return nameItem ? methods::HandOut(node, nameItem) : S_OK;
  });
}

namespace {

Node* MadeOf(Document& document, NodeKind kind, std::u16string_view text,
             std::u16string_view second) {
  switch (kind) {
    case NodeKind::kElement:
      return new (document) Element(&document, {text});
    case NodeKind::kAttribute:
      return new (document) Attribute(&document, {text}, second);
    case NodeKind::kInstruction:
      return new (document) Instruction(&document, text, second);
    case NodeKind::kComment:
      return new (document) Comment(kind, &document, text);
    case NodeKind::kText:
    case NodeKind::kCdata:
    case NodeKind::kDocument:
      break;
  }
  return new (document) Text(kind, &document, text);
}

}  // namespace

Node* MakeNode(Document& document, const Tape& tape, Tape::Cell cell) {
  const NodeKind kind = tape.KindOf(cell);
  const bool hasTwo = kind == NodeKind::kAttribute || kind == NodeKind::kInstruction;
  Node* const node = MadeOf(document, kind, tape.TextOf(cell),
                            hasTwo ? tape.SecondOf(cell) : std::u16string_view{});
  node->LieOn(tape, cell);
  return node;
}

}  // namespace ce::host::dom
