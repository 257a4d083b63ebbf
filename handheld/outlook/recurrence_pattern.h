// Maker of recurrence patterns (IRecurrencePattern).
#pragma once

#include "handheld/outlook/series_item.h"
#include "platform/pocket_outlook_calendar.h"

namespace ce::host {

// The object starts with the caller's reference. It keeps `item`, of which `series` is a part,
// alive; once its series was cleared, every call answers E_FAIL.
IRecurrencePattern* MakePattern(IDispatch* item, SeriesItem& series, int number);

}  // namespace ce::host
