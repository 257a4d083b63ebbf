// When a record recurs, as the wire has it.
#pragma once

#include <optional>
#include <string>

#include "common/calendar/pattern.h"
#include "desktop/wire/xml_records.h"

namespace desktop {

// The children of a "RECURRENCE" element.
std::string PatternToXml(const calendar::Pattern& pattern);

// What an agent makes of the element, of which it takes a number of occurrences before an end date.
// Nothing for a pattern that no handheld has.
std::optional<calendar::Pattern> PatternFromXml(const XmlElement& recurrence);

}  // namespace desktop
