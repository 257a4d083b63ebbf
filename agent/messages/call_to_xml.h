// One call as a record element.
#pragma once

#include "platform/phone.h"
#include "platform/xml_dom.h"

namespace corvane {

// Appends the record "Call"; a failure leaves it as far as it has come. The note that the call
// names is read and goes out as its text. A note that the system cannot read (a positive code) is
// left out; one that cannot be converted fails the record.
ce::HRESULT AddCallToXML(ce::IXMLDOMDocument* document, ce::IXMLDOMNode* root,
                         const ce::CALLLOGENTRY& entry);

}  // namespace corvane
