// The kinds of nodes but for the document, and the map of an element's attributes.
#pragma once

#include <new>

#include "handheld/dom/document.h"
#include "handheld/dom/known_names.h"

namespace ce::host::dom {

// A node that lies in its document's memory, as the texts do that it is made with.
template <typename Interface>
class TreeNode : public NodeObject<Interface> {
 public:
  static void* operator new(std::size_t bytes, Document& document) {
    return document.arena().Take(bytes);
  }
  static void operator delete(void*, Document&) {}
  static void operator delete(void* node, std::size_t bytes) { Arena::GiveBack(node, bytes); }

 protected:
  TreeNode(NodeKind kind, Document* document) : NodeObject<Interface>(kind, document) {
    document->nodes().Add(1);
  }
  ~TreeNode() override { this->document().nodes().Add(-1); }
};

// Text, CDATA sections and comments.
template <typename Interface>
class DataNode final : public TreeNode<Interface> {
 public:
  DataNode(NodeKind kind, Document* document, std::u16string_view data)
      : TreeNode<Interface>(kind, document), data_(data) {}

  std::u16string_view Name() const override {
    const NodeKind kind = this->kind();
    if (kind == NodeKind::kText) return u"#text";
    return kind == NodeKind::kCdata ? u"#cdata-section" : u"#comment";
  }
  std::u16string_view Value() const override { return data_; }

 private:
  ~DataNode() override = default;

  const std::u16string_view data_;
};
using Text = DataNode<IXMLDOMText>;
using Comment = DataNode<IXMLDOMNode>;

// A processing instruction; the declaration of a document is one, too.
class Instruction final : public TreeNode<IXMLDOMProcessingInstruction> {
 public:
  Instruction(Document* document, std::u16string_view target, std::u16string_view data)
      : TreeNode(NodeKind::kInstruction, document), target_(target), data_(data) {}

  std::u16string_view Name() const override { return target_; }
  std::u16string_view Value() const override { return data_; }

 private:
  ~Instruction() override = default;

  const std::u16string_view target_;
  const std::u16string_view data_;
};

// An attribute, owned by an element once it is set on one.
class Attribute final : public TreeNode<IXMLDOMAttribute> {
 public:
  Attribute(Document* document, const dom::Name& name, std::u16string_view value = {})
      : TreeNode(NodeKind::kAttribute, document), name_(name), value_(value) {}

  std::u16string_view Name() const override { return name_.text; }
  const dom::Name& name() const { return name_; }
  std::u16string_view Value() const override { return value_; }

  HRESULT put_value(VARIANT value) override;

 private:
  ~Attribute() override = default;

  const dom::Name name_;
  std::u16string_view value_;
};

class Element final : public TreeNode<IXMLDOMElement> {
 public:
  Element(Document* document, const dom::Name& name)
      : TreeNode(NodeKind::kElement, document), name_(name) {}

  std::u16string_view Name() const override { return name_.text; }
  const dom::Name& name() const { return name_; }

  const Node* firstAttribute() {
    TakeAttributes();
    return attributes_.first;
  }
  Node* FindAttribute(std::u16string_view name);
  // Replaces an attribute of the same name. E_INVALIDARG for an attribute of another element.
  HRESULT SetAttribute(Node& attribute);

 private:
  ~Element() override { DropAll(attributes_); }

  void TakeAttributes() override;
  bool AttributesAreHeld() const override;

  const dom::Name name_;
  NodeList attributes_;
  bool attributesTaken_ = false;
};

// Keeps the element alive.
class AttributeMap final : public ComObject<IXMLDOMNamedNodeMap> {
 public:
  explicit AttributeMap(Element& element) : element_(&element) {}

  HRESULT getNamedItem(BSTR name, IXMLDOMNode** item) override;
  HRESULT setNamedItem(IXMLDOMNode* newItem, IXMLDOMNode** nameItem) override;

 private:
  ~AttributeMap() override = default;

  const ComPtr<Element> element_;
};

}  // namespace ce::host::dom
