// An attribute: a name and a value, owned by an element once it is set on one.
#pragma once

#include <string>
#include <utility>

#include "handheld/dom/node_object.h"

namespace ce::host::dom {

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

}  // namespace ce::host::dom
