#include "agent/pim_export/categories_to_xml.h"

#include "agent/vocabulary/contact_fields.h"
#include "agent/xml/document.h"
#include "agent/xml/values.h"
#include "platform/com_ptr.h"
#include "platform/status.h"

namespace corvane {

using namespace ce;

namespace {

HRESULT AddCategory(IXMLDOMDocument* document, IXMLDOMElement* list, const WCHAR* name) {
  ComPtr<IXMLDOMElement> category;
  RETURN_IF_FAILED(CreateXMLElement(document, kCategoryElement, category.put()));
  RETURN_IF_FAILED(list->appendChild(category.get(), nullptr));
  return AddStringElement(document, category.get(), kCategoryNameElement, name);
}

// Ends the name that begins at `name` and answers where the next one begins, null after the last.
WCHAR* CutName(WCHAR* name) {
  while (*name && *name != u',') ++name;
  if (!*name) return nullptr;
  *name++ = 0;
  return *name == u' ' ? name + 1 : name;
}

}  // namespace

HRESULT AddCategoriesToXML(IXMLDOMDocument* document, IXMLDOMNode* parent, const WCHAR* name,
                           BSTR* categories) {
  Bstr names;
  names.attach(*categories);
  *categories = nullptr;
  if (names.empty()) return S_OK;
  if (!parent) return E_POINTER;

  ComPtr<IXMLDOMElement> list;
  RETURN_IF_FAILED(CreateXMLElement(document, name, list.put()));
  for (WCHAR* current = names.get(); current;) {
    WCHAR* const next = CutName(current);
    RETURN_IF_FAILED(AddCategory(document, list.get(), current));
    current = next;
  }
  return parent->appendChild(list.get(), nullptr);
}

}  // namespace corvane
