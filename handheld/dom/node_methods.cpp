#include "handheld/dom/node_methods.h"

#include "handheld/base/guarded.h"
#include "handheld/dom/attribute_map.h"
#include "handheld/dom/document.h"
#include "handheld/dom/element.h"
#include "handheld/dom/utf.h"

namespace ce::host::dom::methods {
namespace {

BSTR Copy(std::u16string_view text) {
  return SysAllocStringLen(text.data(), static_cast<UINT>(text.size()));
}

}  // namespace

HRESULT GetName(Node& node, BSTR* name) {
  if (!name) return E_POINTER;
  *name = nullptr;
  return Guarded("IXMLDOMNode::get_nodeName", [&] {
    *name = Copy(node.Name());
    return *name ? S_OK : E_OUTOFMEMORY;
  });
}

HRESULT GetValue(Node& node, VARIANT* value) {
  if (!value) return E_POINTER;
  VariantInit(value);
  return Guarded("IXMLDOMNode::get_nodeValue", [&] {
    if (node.kind() == NodeKind::kElement || node.kind() == NodeKind::kDocument) {
      value->vt = VT_NULL;
      return S_FALSE;
    }
    const BSTR text = Copy(node.Value());
    if (!text) return E_OUTOFMEMORY;
    value->vt = VT_BSTR;
    value->bstrVal = text;
    return S_OK;
  });
}

HRESULT GetFirstChild(Node& node, IXMLDOMNode** child) {
  if (!child) return E_POINTER;
  *child = nullptr;
  return Guarded("IXMLDOMNode::get_firstChild", [&] { return HandOut(node.firstChild(), child); });
}

HRESULT GetNextSibling(Node& node, IXMLDOMNode** sibling) {
  if (!sibling) return E_POINTER;
  *sibling = nullptr;
  return Guarded("IXMLDOMNode::get_nextSibling", [&] {
    // Attributes are no siblings of each other.
    return HandOut(node.kind() == NodeKind::kAttribute ? nullptr : node.next(), sibling);
  });
}

HRESULT GetAttributes(Node& node, IXMLDOMNamedNodeMap** attributes) {
  if (!attributes) return E_POINTER;
  *attributes = nullptr;
  return Guarded("IXMLDOMNode::get_attributes", [&] {
    if (node.kind() != NodeKind::kElement) return S_FALSE;
    *attributes = new AttributeMap(static_cast<Element&>(node));
    return S_OK;
  });
}

HRESULT AppendChild(Node& node, IXMLDOMNode* child, IXMLDOMNode** appended) {
  if (appended) *appended = nullptr;
  return Guarded("IXMLDOMNode::appendChild", [&] {
    if (!child) return E_INVALIDARG;
    HRESULT status = S_OK;
    Node* const core = NodeBehind(child, &status);
    if (!core) return status;
    status = node.AppendChild(*core);
    if (Succeeded(status) && appended) HandOut(core, appended);
    return status;
  });
}

HRESULT SelectSingleNode(Node& node, BSTR query, IXMLDOMNode** found) {
  if (!found) return E_POINTER;
  *found = nullptr;
  return Guarded("IXMLDOMNode::selectSingleNode", [&] {
    const std::u16string_view name = View(query);
    if (!IsXmlName(name)) return E_INVALIDARG;
    return HandOut(node.FindChildElement(name), found);
  });
}

void HoldDocument(Document& document) {
  document.AddRef();
}

void ReleaseDocument(Document& document) {
  document.Release();
}

HRESULT HandOut(Node* node, IXMLDOMNode** out) {
  if (!node) return S_FALSE;
  *out = node->Com();
  (*out)->AddRef();
  return S_OK;
}

}  // namespace ce::host::dom::methods
