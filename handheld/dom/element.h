// An element with its attributes.
#pragma once

#include <string>

#include "handheld/dom/attribute.h"
#include "handheld/dom/node_object.h"

namespace ce::host::dom {

class Element final : public NodeObject<IXMLDOMElement> {
 public:
  Element(Document* document, std::u16string name)
      : NodeObject(NodeKind::kElement, document), name_(std::move(name)) {}

  std::u16string_view Name() const override { return name_; }

  const Attribute* firstAttribute() const { return static_cast<Attribute*>(attributes_.first); }
  Attribute* FindAttribute(std::u16string_view name) const;
  // Appends an attribute whose name the element does not have; one of its references passes to the
  // element.
  void AdoptAttribute(Attribute* attribute) { Adopt(attributes_, attribute); }
  // Replaces an attribute of the same name. E_INVALIDARG for an attribute of another element.
  HRESULT SetAttribute(Attribute& attribute);

 private:
  ~Element() override { DropAll(attributes_); }

  const std::u16string name_;
  NodeList attributes_;
};

}  // namespace ce::host::dom
