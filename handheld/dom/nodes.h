// The kinds of nodes but for the document, and the map of an element's attributes.
#pragma once

#include <string>
#include <utility>

#include "handheld/dom/node_object.h"

namespace ce::host::dom {

// Text, CDATA sections and comments.
template <typename Interface>
class DataNode final : public NodeObject<Interface> {
 public:
  DataNode(NodeKind kind, Document* document, std::u16string data)
      : NodeObject<Interface>(kind, document), data_(std::move(data)) {}

  std::u16string_view Name() const override {
    const NodeKind kind = this->kind();
    if (kind == NodeKind::kText) return u"#text";
    return kind == NodeKind::kCdata ? u"#cdata-section" : u"#comment";
  }
  std::u16string_view Value() const override { return data_; }

 private:
  ~DataNode() override = default;

  const std::u16string data_;
};
using Text = DataNode<IXMLDOMText>;
using Comment = DataNode<IXMLDOMNode>;

// A processing instruction; the declaration of a document is one, too.
class Instruction final : public NodeObject<IXMLDOMProcessingInstruction> {
 public:
  Instruction(Document* document, std::u16string target, std::u16string data)
      : NodeObject(NodeKind::kInstruction, document),
        target_(std::move(target)),
        data_(std::move(data)) {}

  std::u16string_view Name() const override { return target_; }
  std::u16string_view Value() const override { return data_; }

 private:
  ~Instruction() override = default;

  const std::u16string target_;
  const std::u16string data_;
};

// An attribute, owned by an element once it is set on one.
class Attribute final : public NodeObject<IXMLDOMAttribute> {
 public:
  Attribute(Document* document, std::u16string name, std::u16string value = {})
      : NodeObject(NodeKind::kAttribute, document),
        name_(std::move(name)),
        value_(std::move(value)) {}

  std::u16string_view Name() const override { return name_; }
  std::u16string_view Value() const override { return value_; }

  HRESULT put_value(VARIANT value) override;

 private:
  ~Attribute() override = default;

  const std::u16string name_;
  std::u16string value_;
};

class Element final : public NodeObject<IXMLDOMElement> {
 public:
  Element(Document* document, std::u16string name)
      : NodeObject(NodeKind::kElement, document), name_(std::move(name)) {}

  std::u16string_view Name() const override { return name_; }

  const Node* firstAttribute() const { return attributes_.first; }
  Node* FindAttribute(std::u16string_view name) const;
  // Appends an attribute whose name the element does not have; one of its references passes to the
  // element.
  void AdoptAttribute(Attribute* attribute) { Adopt(attributes_, attribute); }
  // Replaces an attribute of the same name. E_INVALIDARG for an attribute of another element.
  HRESULT SetAttribute(Node& attribute);

 private:
  ~Element() override { DropAll(attributes_); }

  const std::u16string name_;
  NodeList attributes_;
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
