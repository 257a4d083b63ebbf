// Recurrence patterns from their elements.
#pragma once

#include <string_view>

#include "platform/pocket_outlook_calendar.h"
#include "platform/xml_dom.h"

namespace corvane {

// Sets type, days, interval and end of the pattern. A missing or unknown type, or a missing number
// of the type, is E_FAIL; an end date that does not exist is a positive code.
ce::HRESULT ParseXMLRecurrence(ce::IXMLDOMNode* recurrence, ce::IRecurrencePattern* pattern);

// Sets the mask to the sum of the days' weights; a day that is named twice counts twice. Numbers
// from 0 (Sunday) to 6 behind blanks or, where no blank is left, behind commas: of "1,2 3" the 2 is
// lost. What is no number is 0.
ce::HRESULT ParseDaysOfWeek(std::u16string_view text, ce::IRecurrencePattern* pattern);

}  // namespace corvane
