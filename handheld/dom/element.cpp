#include "handheld/dom/element.h"

namespace ce::host::dom {

Attribute* Element::FindAttribute(std::u16string_view name) const {
  for (Node* node = attributes_.first; node; node = node->next()) {
    if (node->Name() == name) return static_cast<Attribute*>(node);
  }
  return nullptr;
}

HRESULT Element::SetAttribute(Attribute& attribute) {
  if (attribute.owner() == this) return S_OK;
  if (attribute.owner() || &attribute.document() != &document()) return E_INVALIDARG;
  if (Attribute* old = FindAttribute(attribute.Name())) Disown(attributes_, old);
  Share(attributes_, &attribute);
  return S_OK;
}

}  // namespace ce::host::dom
