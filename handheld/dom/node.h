// What every node of the document tree is made of, whatever its kind.
//
// A node that was loaded lies on a tape. Its children are made when they are asked for, and go
// again once nobody outside the tree holds them or anything in them; until then they stand in the
// list in the tape's order. To change a node takes all of its children off the tape first.
//
// Ownership: a node holds one reference on each of its children, an element one on each of its
// attributes. A node that anybody outside the tree holds keeps the document alive, so the pointer
// to the document is always good. A node without an owner lives by its references alone; when it
// goes, those of its descendants that are held from outside stay, as roots of their own. Nobody
// holds any when the document goes: what is left of them goes with its memory.
#pragma once

#include <string_view>

#include "handheld/dom/tape.h"
#include "platform/com_ptr.h"
#include "platform/xml_dom.h"

namespace ce::host::dom {

class Document;
class Node;

// An intrusive list of nodes; it does not count references.
struct NodeList {
  Node* first = nullptr;
  Node* last = nullptr;

  void PushBack(Node* node) { Insert(node, last); }
  // Behind `before`; in front of all when that is null.
  void Insert(Node* node, Node* before);
  void Remove(Node* node);
  // Takes all nodes of `other` to the end of this list.
  void Splice(NodeList& other);
};

class Node {
 public:
  // Answered by the nodes of this implementation alone, with a Node* that is borrowed: the only
  // interface that is not counted.
  static constexpr GUID kIid{
      0x6E1C2A04, 0x53B7, 0x4D09, {0x9C, 0x31, 0x7A, 0x40, 0xD5, 0x1E, 0x88, 0x0F}};

  Node(const Node&) = delete;
  Node& operator=(const Node&) = delete;

  NodeKind kind() const { return kind_; }
  Document& document() const { return *document_; }
  // The parent, or an attribute's element; null for a root.
  Node* owner() const { return owner_; }
  // Makes all children; next() then leads through them.
  Node* firstChild() {
    LeaveTape();
    return children_.first;
  }
  // The next of the owner's children (or attributes) that have been made.
  Node* next() const { return next_; }
  // As asked for one by one, without making the others. Null when there is none.
  Node* MakeFirstChild();
  Node* MakeNextSibling();
  Node* MakeChildElement(std::u16string_view name);
  Node* MakeAnyChildElement();

  virtual std::u16string_view Name() const = 0;
  // Empty for kinds without a value.
  virtual std::u16string_view Value() const { return {}; }
  virtual IXMLDOMNode* Com() = 0;

  // Lets the children come from the tape, of which this node has the cell.
  void LieOn(const Tape& tape, Tape::Cell cell) {
    tape_ = &tape;
    cell_ = cell;
  }
  // Makes all that the tape has in this node, which can be changed then.
  void LeaveTape();
  // By its owner alone.
  bool IsHeldInside() const { return References() == 1; }
  // To be called when nobody outside the tree holds the node any more: it goes, and those above it,
  // as far as the tape tells all that is known of them.
  void GoUnlessNeeded();
  // Moves `child` here from wherever it is. S_OK, or why the tree may not look like that.
  HRESULT AppendChild(Node& child);
  // Lets go of all children without recursion, however deep they are.
  void DropChildren() {
    tape_ = nullptr;
    DropAll(children_);
  }
  // Forgets them, who end otherwise.
  void AbandonChildren() { children_ = {}; }

 protected:
  Node(NodeKind kind, Document* document) : document_(document), kind_(kind) {}
  virtual ~Node() { DropChildren(); }

  void Adopt(NodeList& list, Node* node);
  // As Adopt, with a reference of its own.
  void Share(NodeList& list, Node* node);
  // Takes a node out of its owner's list; drops the owner's reference.
  static void Disown(NodeList& list, Node* node);
  static void DropAll(NodeList& list);
  DWORD Owners() const { return owner_ ? 1 : 0; }
  // Null once it has been left.
  const Tape* tape() const { return tape_; }
  Tape::Cell cell() const { return cell_; }

 private:
  friend struct NodeList;

  // References for an owner: they do not keep the document alive.
  virtual DWORD References() const = 0;
  virtual void Retain() = 0;
  virtual void Drop() = 0;

  // Makes the attributes that the tape has.
  virtual void TakeAttributes() {}
  virtual bool AttributesAreHeld() const { return false; }

  bool MayContain(const Node& child);
  // The child of this cell, made behind `before` unless it is there.
  Node* MakeChild(Tape::Cell cell, Node* before);
  // The first child element on the tape that is wanted.
  template <typename Wanted>
  Node* MakeFirst(Wanted wanted);

  Document* const document_;
  Node* owner_ = nullptr;
  Node* next_ = nullptr;
  Node* previous_ = nullptr;
  NodeList children_;
  const Tape* tape_ = nullptr;
  Tape::Cell cell_ = Tape::kNone;
  const NodeKind kind_;
};

// A node of the tape, with one reference.
Node* MakeNode(Document& document, const Tape& tape, Tape::Cell cell);

// The node behind a COM pointer, borrowed. E_INVALIDARG for null and for one that is not of this
// implementation, else a failure of QueryInterface itself.
[[nodiscard]] HRESULT NodeBehind(IXMLDOMNode* node, Node** core);

}  // namespace ce::host::dom
