#include "handheld/dom/tape.h"

#include <stdexcept>

namespace ce::host::dom {

Tape::Cell Tape::Add(NodeKind kind, Place text) {
  return Add(kind, text, 0);
}

Tape::Cell Tape::Add(NodeKind kind, Place text, Place second) {
  if (units_.size() >= kMaxUnits || cells_.size() >= std::numeric_limits<Cell>::max()) {
    throw std::length_error("too much for one document");
  }
  *cells_.Extend(1) = {static_cast<std::uint32_t>(kind) & 7, text & 0x1FFFFFFFu, second};
  return static_cast<Cell>(cells_.size() - 1);
}

}  // namespace ce::host::dom
