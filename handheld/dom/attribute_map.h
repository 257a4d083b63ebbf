// The attributes of an element, by name. Keeps the element alive.
#pragma once

#include "handheld/base/com_object.h"
#include "handheld/dom/element.h"

namespace ce::host::dom {

class AttributeMap final : public ComObject<IXMLDOMNamedNodeMap> {
 public:
  explicit AttributeMap(Element& element) : element_(&element) {}

  HRESULT getNamedItem(BSTR name, IXMLDOMNode** item) override;
  HRESULT setNamedItem(IXMLDOMNode* newItem, IXMLDOMNode** nameItem) override;

 private:
  ~AttributeMap() override = default;

  const ComPtr<Element> element_;
};

}  // namespace ce::host::dom
