// The categories of a record.
#pragma once

#include "platform/xml_dom.h"

namespace corvane {

// Characters of all names together, commas included.
inline constexpr ce::DWORD kMaxCategoriesText = 1023;

// The names joined with ",": a text that the caller owns, null when there is none. A category
// without a name fails, and so does a text beyond the length (kTextTooLong).
ce::HRESULT ParseXMLCategoriesList(ce::IXMLDOMNode* container, ce::BSTR* categories);

}  // namespace corvane
