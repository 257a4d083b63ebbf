#include "handheld/dom/node.h"

#include <utility>

namespace ce::host::dom {

void NodeList::Insert(Node* node, Node* before) {
  Node* const behind = before ? before->next_ : first;
  node->previous_ = before;
  node->next_ = behind;
  (before ? before->next_ : first) = node;
  (behind ? behind->previous_ : last) = node;
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

Node* Node::MakeChild(Tape::Cell cell, Node* before) {
  Node* const there = before ? before->next_ : children_.first;
  if (there && there->cell_ == cell) return there;
  Node* const node = MakeNode(*document_, *tape_, cell);
  children_.Insert(node, before);
  node->owner_ = this;
  return node;
}

Node* Node::MakeFirstChild() {
  if (!tape_) return children_.first;
  const Tape::Cell cell = tape_->FirstChild(cell_);
  return cell == Tape::kNone ? nullptr : MakeChild(cell, nullptr);
}

Node* Node::MakeNextSibling() {
  if (!owner_ || !owner_->tape_) return next_;
  const Tape::Cell cell = owner_->tape_->NextChild(cell_, owner_->cell_);
  return cell == Tape::kNone ? nullptr : owner_->MakeChild(cell, this);
}

template <typename Wanted>
Node* Node::MakeFirst(Wanted wanted) {
  Tape::Cell cell = tape_->FirstChild(cell_);
  while (cell != Tape::kNone &&
         !(tape_->KindOf(cell) == NodeKind::kElement && wanted(tape_->TextOf(cell)))) {
    cell = tape_->NextChild(cell, cell_);
  }
  if (cell == Tape::kNone) return nullptr;
  Node* before = nullptr;
  for (Node* node = children_.first; node && node->cell_ < cell; node = node->next_) before = node;
  return MakeChild(cell, before);
}

Node* Node::MakeChildElement(std::u16string_view name) {
  if (tape_) {
    return MakeFirst([&](std::u16string_view text) { return text == name; });
  }
  for (Node* node = children_.first; node; node = node->next_) {
    if (node->kind_ == NodeKind::kElement && node->Name() == name) return node;
  }
  return nullptr;
}

Node* Node::MakeAnyChildElement() {
  if (tape_) {
    return MakeFirst([](std::u16string_view) { return true; });
  }
  for (Node* node = children_.first; node; node = node->next_) {
    if (node->kind_ == NodeKind::kElement) return node;
  }
  return nullptr;
}

void Node::LeaveTape() {
  if (!tape_) return;
  TakeAttributes();
  Node* before = nullptr;
  for (Tape::Cell cell = tape_->FirstChild(cell_); cell != Tape::kNone;
       cell = tape_->NextChild(cell, cell_)) {
    before = MakeChild(cell, before);
  }
  tape_ = nullptr;
}

void Node::GoUnlessNeeded() {
  Node* node = kind_ == NodeKind::kAttribute ? owner_ : this;
  while (node && node->owner_ && node->owner_->tape_ && node->tape_ && node->IsHeldInside() &&
         !node->children_.first && !node->AttributesAreHeld()) {
    Node* const owner = node->owner_;
    Disown(owner->children_, node);
    node = owner;
  }
}

bool Node::MayContain(const Node& child) {
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
  for (const Node* node = this; node; node = child.children_.first ? node->owner_ : nullptr) {
    if (node == &child) return E_FAIL;
  }
  LeaveTape();
  // The caller holds the child, so it outlives the moment without an owner.
  if (child.owner_) {
    child.owner_->LeaveTape();
    Disown(child.owner_->children_, &child);
  }
  Share(children_, &child);
  return S_OK;
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
