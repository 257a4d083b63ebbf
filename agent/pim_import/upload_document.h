// The parser of an upload's documents.
#pragma once

#include "platform/com_ptr.h"
#include "platform/xml_dom.h"

namespace corvane {

class UploadDocument {
 public:
  // Makes the parser and switches off all that reaches beyond the bytes it is given.
  [[nodiscard]] ce::HRESULT Create();
  // Replaces what was loaded before.
  [[nodiscard]] ce::HRESULT Load(const ce::BYTE* bytes, ce::DWORD count);
  // Null, with success, when the document has no root or the root no children. The root keeps the
  // children alive.
  [[nodiscard]] ce::HRESULT FirstRecord(ce::ComPtr<ce::IXMLDOMNode>* record);

 private:
  ce::ComPtr<ce::IXMLDOMDocument> document_;
};

}  // namespace corvane
