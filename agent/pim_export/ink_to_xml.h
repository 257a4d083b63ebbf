// The mark that a record's note is an ink note.
#pragma once

#include "platform/xml_dom.h"

namespace corvane {

// Whether the block is an ink note: longer than its five-byte signature.
bool IsInkNote(ce::DWORD bytes, const ce::BYTE* block);

// Adds `name` as TRUE when the block is an ink note. `read` is the status of reading the block;
// E_NOTIMPL and E_FAIL mean that there is none and count as success.
ce::HRESULT AddInkToXML(ce::IXMLDOMDocument* document, ce::IXMLDOMNode* parent,
                        const ce::WCHAR* name, ce::HRESULT read, ce::DWORD bytes,
                        const ce::BYTE* block);

}  // namespace corvane
