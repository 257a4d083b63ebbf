// The COM side that all nodes share: counting, and the methods of IXMLDOMNode.
#pragma once

#include "handheld/base/com_object.h"
#include "handheld/dom/node.h"

namespace ce::host::dom {

// IXMLDOMNode's methods, written once for all kinds of nodes.
namespace methods {

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

}  // namespace methods

// Starts with one reference, for an owner or (after HandOutNew) for somebody outside.
template <typename Interface>
class NodeObject : public Dispatched<UncountedObject<Interface, IXMLDOMNode, IDispatch>>,
                   public Node {
  using Object = Dispatched<UncountedObject<Interface, IXMLDOMNode, IDispatch>>;

 public:
  NodeObject(NodeKind kind, Document* document) : Node(kind, document) {}

  HRESULT QueryInterface(const GUID& iid, void** out) override {
    const bool isOwn = &iid == &Node::kIid || iid == Node::kIid;
    if (!isOwn || !out) return Object::QueryInterface(iid, out);
    *out = nullptr;
    RETURN_IF_FAILED(FaultStatus("QueryInterface"));
    *out = static_cast<Node*>(this);
    return S_OK;
  }
  DWORD AddRef() override {
    const DWORD count = Object::AddRef();
    if (count == 1 + Owners()) methods::HoldDocument(document());
    return count;
  }
  DWORD Release() override {
    Document* const held = Object::references() == 1 + Owners() ? &document() : nullptr;
    const DWORD count = Object::Release();
    if (!held) return count;
    if (count > 0) GoUnlessNeeded();
    methods::ReleaseDocument(*held);
    return count;
  }

  HRESULT get_nodeName(BSTR* name) override { return methods::GetName(*this, name); }
  HRESULT get_nodeValue(VARIANT* value) override { return methods::GetValue(*this, value); }
  HRESULT get_firstChild(IXMLDOMNode** child) override {
    return methods::GetFirstChild(*this, child);
  }
  HRESULT get_nextSibling(IXMLDOMNode** sibling) override {
    return methods::GetNextSibling(*this, sibling);
  }
  HRESULT get_attributes(IXMLDOMNamedNodeMap** attributes) override {
    return methods::GetAttributes(*this, attributes);
  }
  HRESULT appendChild(IXMLDOMNode* child, IXMLDOMNode** appended) override {
    return methods::AppendChild(*this, child, appended);
  }
  HRESULT selectSingleNode(BSTR query, IXMLDOMNode** node) override {
    return methods::SelectSingleNode(*this, query, node);
  }

  IXMLDOMNode* Com() final { return this; }

 private:
  DWORD References() const final { return Object::references(); }
  void Retain() final { Object::AddRef(); }
  void Drop() final { Object::Release(); }
};

}  // namespace ce::host::dom
