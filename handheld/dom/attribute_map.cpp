#include "handheld/dom/attribute_map.h"

#include "handheld/base/guarded.h"

namespace ce::host::dom {

HRESULT AttributeMap::getNamedItem(BSTR name, IXMLDOMNode** item) {
  if (!item) return E_POINTER;
  *item = nullptr;
  return Guarded("IXMLDOMNamedNodeMap::getNamedItem", [&] {
    return methods::HandOut(element_->FindAttribute(methods::View(name)), item);
  });
}

HRESULT AttributeMap::setNamedItem(IXMLDOMNode* newItem, IXMLDOMNode** nameItem) {
  if (nameItem) *nameItem = nullptr;
  return Guarded("IXMLDOMNamedNodeMap::setNamedItem", [&] {
    if (!newItem) return E_INVALIDARG;
    HRESULT status = S_OK;
    Node* const node = NodeBehind(newItem, &status);
    if (!node) return status;
    if (node->kind() != NodeKind::kAttribute) return E_INVALIDARG;
    status = element_->SetAttribute(static_cast<Attribute&>(*node));
    if (Succeeded(status) && nameItem) methods::HandOut(node, nameItem);
    return status;
  });
}

}  // namespace ce::host::dom
