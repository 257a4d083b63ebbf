#include "handheld/dom/node.h"

#include <utility>

namespace ce::host::dom {

void NodeList::PushBack(Node* node) {
  node->previous_ = last;
  node->next_ = nullptr;
  (last ? last->next_ : first) = node;
  last = node;
}

void NodeList::Remove(Node* node) {
  (node->previous_ ? node->previous_->next_ : first) = node->next_;
  (node->next_ ? node->next_->previous_ : last) = node->previous_;
  node->previous_ = nullptr;
  node->next_ = nullptr;
}

void NodeList::Splice(NodeList& other) {
  if (!other.first) return;
  other.first->previous_ = last;
  (last ? last->next_ : first) = other.first;
  last = other.last;
  other = {};
}

void Node::Adopt(NodeList& list, Node* node) {
  list.PushBack(node);
  node->owner_ = this;
}

void Node::Share(NodeList& list, Node* node) {
  node->Retain();
  Adopt(list, node);
}

void Node::Disown(NodeList& list, Node* node) {
  list.Remove(node);
  node->owner_ = nullptr;
  node->Drop();
}

void Node::DropAll(NodeList& list) {
  while (Node* node = list.first) {
    // A node that nobody else holds ends here; its children join the queue, so that the depth of
    // the tree costs no stack. Their owner_ is stale until their turn comes.
    if (node->References() == 1) list.Splice(node->children_);
    Disown(list, node);
  }
}

bool Node::MayContain(const Node& child) const {
  switch (child.kind_) {
    case NodeKind::kDocument:
    case NodeKind::kAttribute:
      return false;
    case NodeKind::kElement:
      if (kind_ != NodeKind::kDocument) break;
      for (const Node* node = firstChild(); node; node = node->next()) {
        if (node->kind_ == NodeKind::kElement && node != &child) return false;
      }
      return true;
    case NodeKind::kText:
    case NodeKind::kCdata:
      return kind_ == NodeKind::kElement;
    case NodeKind::kComment:
    case NodeKind::kInstruction:
      break;
  }
  return kind_ == NodeKind::kElement || kind_ == NodeKind::kDocument;
}

HRESULT Node::AppendChild(Node& child) {
  if (child.document_ != document_) return E_INVALIDARG;
  if (!MayContain(child)) return E_FAIL;
  // Only a node with children can be above this one.
  for (const Node* node = this; node; node = child.firstChild() ? node->owner_ : nullptr) {
    if (node == &child) return E_FAIL;
  }
  // The caller holds the child, so it outlives the moment without an owner.
  if (child.owner_) Disown(child.owner_->children_, &child);
  Share(children_, &child);
  return S_OK;
}

Node* Node::FindChildElement(std::u16string_view name) const {
  for (Node* node = firstChild(); node; node = node->next()) {
    if (node->kind_ == NodeKind::kElement && node->Name() == name) return node;
  }
  return nullptr;
}

HRESULT NodeBehind(IXMLDOMNode* node, Node** core) {
  if (!node) return E_INVALIDARG;
  void* found = nullptr;
  const HRESULT status = node->QueryInterface(Node::kIid, &found);
  if (Failed(status)) return status == E_NOINTERFACE ? E_INVALIDARG : status;
  *core = static_cast<Node*>(found);
  return S_OK;
}

}  // namespace ce::host::dom
