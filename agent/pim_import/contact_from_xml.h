// Contacts from record elements.
#pragma once

#include "platform/pocket_outlook.h"
#include "platform/xml_dom.h"

namespace corvane {

class CorvaneStream;

// Applies one "CONTACT" (form 1) or "Contact2" (form 2) record, which are read alike, and writes
// its reply. A field that the record lacks is cleared. Answers the result in the reply.
ce::HRESULT ParseXMLContact(ce::IXMLDOMNode* record, ce::IPOutlookApp* app, CorvaneStream* stream,
                            ce::LONG tagForm);

}  // namespace corvane
