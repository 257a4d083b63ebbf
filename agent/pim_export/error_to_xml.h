// The record that stands for an item which could not be exported.
#pragma once

#include "platform/xml_dom.h"

namespace corvane {

// Appends "Error" with the attribute "Oid" and the child "Value": the status in signed decimal.
ce::HRESULT AddErrorToXML(ce::IXMLDOMDocument* document, ce::IXMLDOMNode* parent, ce::LONG oid,
                          ce::HRESULT status);

}  // namespace corvane
