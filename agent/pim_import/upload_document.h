// The parser of an upload's documents.
#pragma once

#include "platform/com_ptr.h"
#include "platform/xml_dom.h"

namespace corvane {

class UploadDocument {
 public:
  // Makes the parser and switches off all that reaches beyond the bytes it is given.
  [[nodiscard]] ce::HRESULT Create();
  // Of an array of bytes; replaces what was loaded before.
  [[nodiscard]] ce::HRESULT Load(const ce::VARIANT& bytes);
  // Gives back the memory of what was loaded.
  void Clear();
  // Null, with success, when the document has no root or the root no children. The root keeps the
  // children alive.
  [[nodiscard]] ce::HRESULT FirstRecord(ce::ComPtr<ce::IXMLDOMNode>* record);

 private:
  ce::ComPtr<ce::IXMLDOMDocument> document_;
};

}  // namespace corvane
