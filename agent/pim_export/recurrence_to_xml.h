// How an item recurs, as an element of its record.
#pragma once

#include "platform/pocket_outlook_calendar.h"
#include "platform/xml_dom.h"

namespace corvane {

// Appends "RECURRENCE", with an element for every changed or deleted occurrence when asked for. A
// failure appends nothing, except that the element of a deleted occurrence which cannot be written
// is left out. A null pattern is E_UNEXPECTED.
ce::HRESULT AddRecurrenceToChild(ce::IXMLDOMDocument* document, ce::IXMLDOMNode* parent,
                                 ce::IRecurrencePattern* pattern, bool withExceptions);

}  // namespace corvane
