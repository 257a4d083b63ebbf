#include "handheld/dom/node_object.h"

#include "common/text/xml_text.h"
#include "handheld/base/guarded.h"
#include "handheld/dom/document.h"
#include "handheld/dom/nodes.h"

namespace ce::host::dom::methods {
namespace {

BSTR Copy(std::u16string_view text) {
  return SysAllocStringLen(text.data(), static_cast<UINT>(text.size()));
}

}  // namespace

HRESULT GetName(Node& node, BSTR* name) {
  return Guarded("IXMLDOMNode::get_nodeName", name, [&] {
    *name = Copy(node.Name());
    return *name ? S_OK : E_OUTOFMEMORY;
  });
}

HRESULT GetValue(Node& node, VARIANT* value) {
  return Guarded("IXMLDOMNode::get_nodeValue", value, [&] {
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
  return Guarded("IXMLDOMNode::get_firstChild", child,
                 [&] { return HandOut(node.MakeFirstChild(), child); });
}

HRESULT GetNextSibling(Node& node, IXMLDOMNode** sibling) {
  return Guarded("IXMLDOMNode::get_nextSibling", sibling, [&] {
    // Attributes are no siblings of each other.
    return HandOut(node.kind() == NodeKind::kAttribute ? nullptr : node.MakeNextSibling(), sibling);
  });
}

HRESULT GetAttributes(Node& node, IXMLDOMNamedNodeMap** attributes) {
  return Guarded("IXMLDOMNode::get_attributes", attributes, [&] {
    if (node.kind() != NodeKind::kElement) return S_FALSE;
    *attributes = new AttributeMap(static_cast<Element&>(node));
    return S_OK;
  });
}

HRESULT AppendChild(Node& node, IXMLDOMNode* child, IXMLDOMNode** appended) {
  if (appended) *appended = nullptr;
  return Guarded("IXMLDOMNode::appendChild", [&] {
    Node* core = nullptr;
    RETURN_IF_FAILED(NodeBehind(child, &core));
    RETURN_IF_FAILED(node.AppendChild(*core));
    return appended ? HandOut(core, appended) : S_OK;
  });
}

HRESULT SelectSingleNode(Node& node, BSTR query, IXMLDOMNode** found) {
  return Guarded("IXMLDOMNode::selectSingleNode", found, [&] {
    const std::u16string_view name = View(query);
    if (!text::IsXmlName(name)) return E_INVALIDARG;
    return HandOut(node.MakeChildElement(name), found);
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
