// The occurrences of a series that are not as its pattern has them.
#pragma once

#include "platform/pocket_outlook_calendar.h"
#include "platform/xml_dom.h"

namespace corvane {

// Deletes and changes occurrences in the order of their elements; every one is stored at once. An
// element names its occurrence by the date alone: the time of day is that of `seriesStart`. A date
// without an occurrence is skipped. At the first element that fails the rest is left undone; a date
// that does not exist is a positive code.
ce::HRESULT ParseXMLExceptions(ce::IXMLDOMNode* recurrence, ce::IRecurrencePattern* pattern,
                               ce::DATE seriesStart);

}  // namespace corvane
