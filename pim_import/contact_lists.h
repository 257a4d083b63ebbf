// The two fields of a contact that hold lists.
#pragma once

#include "platform/pocket_outlook.h"
#include "platform/xml_dom.h"

namespace corvane {

// Sets an address for every "EMAIL_ADDRESS" that has a "NAME" and one of the known types; a later
// one of the same type replaces the earlier. The status of the last step.
ce::HRESULT ParseXMLEmailAddresses(ce::IXMLDOMNode* container, ce::IContact* contact);

// Characters of all names together, commas included.
inline constexpr ce::DWORD kMaxCategoriesText = 1023;

// The names joined with ",": a text that the caller owns, null when there is none. A category
// without a name fails, and so does a text beyond the length (kTextTooLong).
ce::HRESULT ParseXMLCategoriesList(ce::IXMLDOMNode* container, ce::BSTR* categories);

}  // namespace corvane
