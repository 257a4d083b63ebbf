// Keeps a document to the bytes it is given.
#pragma once

#include "platform/xml_dom.h"

namespace corvane {

// Switches off every safety option that the document knows, its validation, what lies outside of it
// and text of white space alone. Before it is loaded or filled.
ce::HRESULT ConfineDocument(ce::IXMLDOMDocument* document);

}  // namespace corvane
