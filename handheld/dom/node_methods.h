// IXMLDOMNode's methods, written once for all kinds of nodes.
#pragma once

#include "handheld/dom/node.h"

namespace ce::host::dom::methods {

HRESULT GetName(Node& node, BSTR* name);
HRESULT GetValue(Node& node, VARIANT* value);
HRESULT GetFirstChild(Node& node, IXMLDOMNode** child);
HRESULT GetNextSibling(Node& node, IXMLDOMNode** sibling);
HRESULT GetAttributes(Node& node, IXMLDOMNamedNodeMap** attributes);
HRESULT AppendChild(Node& node, IXMLDOMNode* child, IXMLDOMNode** appended);
HRESULT SelectSingleNode(Node& node, BSTR query, IXMLDOMNode** found);

// The reference on its document that a node holds while it is held from outside the tree.
void HoldDocument(Document& document);
void ReleaseDocument(Document& document);

// A counted pointer for a caller: S_FALSE and null for "absent".
HRESULT HandOut(Node* node, IXMLDOMNode** out);

// A node that was just made, with the reference that it was made with.
template <typename NodeType, typename Interface>
HRESULT HandOutNew(NodeType* node, Interface** out) {
  HoldDocument(node->document());
  *out = node;
  return S_OK;
}

// Null is the empty text.
inline std::u16string_view View(BSTR text) {
  return text ? std::u16string_view{text, SysStringLen(text)} : std::u16string_view{};
}

}  // namespace ce::host::dom::methods
