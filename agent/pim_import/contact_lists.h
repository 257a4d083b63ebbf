// The addresses of a contact.
#pragma once

#include "platform/pocket_outlook.h"
#include "platform/xml_dom.h"

namespace corvane {

// Sets an address for every "EMAIL_ADDRESS" that has a "NAME" and one of the known types; a later
// one of the same type replaces the earlier. The status of the last step.
ce::HRESULT ParseXMLEmailAddresses(ce::IXMLDOMNode* container, ce::IContact* contact);

}  // namespace corvane
