// Says in words when something recurs.
#pragma once

#include <string>

#include "common/calendar/pattern.h"

namespace calendar {

// "weekly on Mon, Wed until 2008-06-30", "every 2 months on the last Fri"; "recurring" for a
// pattern that is not valid.
std::string PatternWords(const Pattern& pattern);

}  // namespace calendar
