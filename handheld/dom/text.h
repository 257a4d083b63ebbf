// Character data: text nodes, and CDATA sections as they were read.
#pragma once

#include <string>
#include <utility>

#include "handheld/dom/node_object.h"

namespace ce::host::dom {

class Text final : public NodeObject<IXMLDOMText> {
 public:
  // `kind`: kText or kCdata.
  Text(Document* document, NodeKind kind, std::u16string data)
      : NodeObject(kind, document), data_(std::move(data)) {}

  std::u16string_view Name() const override {
    return kind() == NodeKind::kText ? u"#text" : u"#cdata-section";
  }
  std::u16string_view Value() const override { return data_; }

 private:
  ~Text() override = default;

  const std::u16string data_;
};

}  // namespace ce::host::dom
