// The COM side that all nodes share: counting, and the methods of IXMLDOMNode.
#pragma once

#include "handheld/base/com_object.h"
#include "handheld/dom/node.h"
#include "handheld/dom/node_methods.h"

namespace ce::host::dom {

// Starts with one reference, for an owner or (after HandOutNew) for somebody outside.
template <typename Interface>
class NodeObject : public ComObject<Interface, IXMLDOMNode>, public Node {
  using Object = ComObject<Interface, IXMLDOMNode>;

 public:
  NodeObject(NodeKind kind, Document* document) : Node(kind, document) {}

  DWORD AddRef() override {
    const DWORD count = Object::AddRef();
    if (count == 1 + Owners()) methods::HoldDocument(document());
    return count;
  }
  DWORD Release() override {
    Document* const held = Object::references() == 1 + Owners() ? &document() : nullptr;
    const DWORD count = Object::Release();
    if (held) methods::ReleaseDocument(*held);
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

 protected:
  void* ExtraInterface(const GUID& iid) override {
    return iid == Node::kIid ? static_cast<Node*>(this) : nullptr;
  }

 private:
  DWORD References() const final { return Object::references(); }
  void Retain() final { Object::AddRef(); }
  void Drop() final { Object::Release(); }
};

}  // namespace ce::host::dom
