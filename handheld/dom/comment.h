// A comment as it was read.
#pragma once

#include <string>
#include <utility>

#include "handheld/dom/node_object.h"

namespace ce::host::dom {

class Comment final : public NodeObject<IXMLDOMNode> {
 public:
  Comment(Document* document, std::u16string data)
      : NodeObject(NodeKind::kComment, document), data_(std::move(data)) {}

  std::u16string_view Name() const override { return u"#comment"; }
  std::u16string_view Value() const override { return data_; }

 private:
  ~Comment() override = default;

  const std::u16string data_;
};

}  // namespace ce::host::dom
