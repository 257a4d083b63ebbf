// The document as the text that goes over the wire: UTF-8, without anything between the nodes.
#pragma once

#include "handheld/dom/node.h"
#include "platform/com.h"

namespace ce::host::dom {

// S_OK, or the stream's failure. Text of any content gives a well-formed document.
[[nodiscard]] HRESULT Save(Node& document, ISequentialStream* stream);

}  // namespace ce::host::dom
