#include "handheld/dom/nodes.h"

#include "handheld/base/guarded.h"

namespace ce::host::dom {

HRESULT Attribute::put_value(VARIANT value) {
  return Guarded("IXMLDOMAttribute::put_value", [&] {
    if (value.vt != VT_BSTR) return E_INVALIDARG;
    value_ = document().arena().Keep(methods::View(value.bstrVal));
    return S_OK;
  });
}

Node* Element::FindAttribute(std::u16string_view name) const {
  for (Node* node = attributes_.first; node; node = node->next()) {
    if (node->Name() == name) return node;
  }
  return nullptr;
}

HRESULT Element::SetAttribute(Node& attribute) {
  if (attribute.kind() != NodeKind::kAttribute) return E_INVALIDARG;
  if (attribute.owner() == this) return S_OK;
  if (attribute.owner() || &attribute.document() != &document()) return E_INVALIDARG;
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

}  // namespace ce::host::dom
