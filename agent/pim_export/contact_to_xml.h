// One contact as a record element.
#pragma once

#include "platform/pocket_outlook.h"
#include "platform/xml_dom.h"

namespace corvane {

// Appends a record ("CONTACT" for variant 1, "Contact2" for 2; any other is E_INVALIDARG and
// appends nothing) with the attribute "Oid" and a child for every field that has a value. A failure
// leaves the record in the tree with the children written so far.
ce::HRESULT AddContactToXML(ce::IXMLDOMDocument* document, ce::IXMLDOMNode* parent,
                            ce::IContact* contact, ce::LONG variant);

}  // namespace corvane
