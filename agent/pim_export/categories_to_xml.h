// The categories of a record.
#pragma once

#include "platform/xml_dom.h"

namespace corvane {

// Splits `*categories` at its commas, one blank after a comma not counting, into a "CATEGORIES"
// element with one "CATEGORY" a name; an empty name gives a "CATEGORY" without "Name". Null or
// empty text writes nothing, a failure attaches nothing. `*categories` is freed and nulled on every
// path.
ce::HRESULT AddCategoriesToXML(ce::IXMLDOMDocument* document, ce::IXMLDOMNode* parent,
                               const ce::WCHAR* name, ce::BSTR* categories);

}  // namespace corvane
