// One task as a record element.
#pragma once

#include "platform/pocket_outlook_calendar.h"
#include "platform/xml_dom.h"

namespace corvane {

// Appends a record "TASK" with the attribute "Oid" and a child for every field that has a value. A
// failure leaves the record in the tree with the children written so far.
ce::HRESULT AddTaskToXML(ce::IXMLDOMDocument* document, ce::IXMLDOMNode* parent, ce::ITask* task);

}  // namespace corvane
