// One text message as a record element.
#pragma once

#include <array>

#include "platform/mapi.h"
#include "platform/xml_dom.h"

namespace corvane {

// The text of the message that had one last, zero-terminated.
using MessageText = std::array<ce::WCHAR, 4096>;

// Appends the record "SMS" of a row of a contents table. A multimedia message's is left as it is
// when its class is seen; so is that of a row without an entry identifier. `text` receives the
// message's text, as far as it has one, and is what goes out as "NOTES".
ce::HRESULT AddMessageToXML(ce::IXMLDOMDocument* document, ce::IXMLDOMNode* root,
                            ce::IMsgStore* store, const ce::WCHAR* path, const ce::SRow& row,
                            MessageText* text);

// Sets "Oid" to the first 64 bytes in upper-case hexadecimal; nothing for no bytes.
ce::HRESULT AddEntryIdAttribute(ce::IXMLDOMDocument* document, ce::IXMLDOMElement* element,
                                ce::DWORD count, const ce::BYTE* bytes);

}  // namespace corvane
