// The recipients of a text message.
#pragma once

#include "platform/mapi.h"
#include "platform/xml_dom.h"

namespace corvane {

// Appends "Recipients" with a "Recipient" for each address; nothing for a message without any. Only
// the first `values` properties of a recipient are looked at: as many as its message's row has,
// which is how far the desktop has always been shown them.
ce::HRESULT AddRecipientsToXML(ce::IXMLDOMDocument* document, ce::IXMLDOMElement* parent,
                               ce::IMessage* message, ce::DWORD values);

}  // namespace corvane
