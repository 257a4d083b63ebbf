#include "agent/pim_import/child_elements.h"

#include <span>
#include <string_view>

#include "platform/com_ptr.h"
#include "platform/status.h"

namespace corvane {

using namespace ce;

namespace {

// Of the kinds of nodes that can have a field's name, an element alone is without a value.
HRESULT IsElement(IXMLDOMNode* node, bool* element) {
  Variant value;
  RETURN_IF_FAILED(node->get_nodeValue(value.put()));
  *element = value.get().vt == VT_NULL;
  return S_OK;
}

}  // namespace

ChildElements::~ChildElements() {
  for (const Child& child : std::span(children_).first(count_)) {
    SysFreeString(child.name);
    child.node->Release();
  }
}

HRESULT ChildElements::Index() {
  ComPtr<IXMLDOMNode> child;
  HRESULT status = node_->get_firstChild(child.put());
  while (Succeeded(status) && child && count_ < kMostIndexed) {
    BSTR name = nullptr;
    RETURN_IF_FAILED(child->get_nodeName(&name));
    IXMLDOMNode* const indexed = child.detach();
    children_[count_++] = {name, SysStringLen(name), indexed};
    status = indexed->get_nextSibling(child.put());
  }
  complete_ = Succeeded(status) && !child;
  return Failed(status) ? status : S_OK;
}

HRESULT ChildElements::Find(const WCHAR* name, IXMLDOMNode** child) const {
  *child = nullptr;
  const std::u16string_view wanted = name;
  for (const Child& indexed : std::span(children_).first(count_)) {
    if (std::u16string_view{indexed.name, indexed.length} != wanted) continue;
    bool element = false;
    RETURN_IF_FAILED(IsElement(indexed.node, &element));
    if (!element) continue;
    *child = indexed.node;
    (*child)->AddRef();
    return S_OK;
  }
  return complete_ ? E_FAIL : Ask(name, child);
}

HRESULT ChildElements::Ask(const WCHAR* name, IXMLDOMNode** child) const {
  const Bstr query(name);
  if (!query) return E_OUTOFMEMORY;
  ComPtr<IXMLDOMNode> found;
  RETURN_IF_FAILED(node_->selectSingleNode(query.get(), found.put()));
  if (!found) return E_FAIL;
  *child = found.detach();
  return S_OK;
}

}  // namespace corvane
