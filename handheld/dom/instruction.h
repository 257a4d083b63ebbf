// A processing instruction; the declaration of a document is one, too.
#pragma once

#include <string>
#include <utility>

#include "handheld/dom/node_object.h"

namespace ce::host::dom {

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

}  // namespace ce::host::dom
