// The steps of reading a date.
#pragma once

#include <string_view>

#include "platform/automation.h"

namespace corvane {

// The numbers of "20080215", whatever follows, with no time of day; false unless all three are
// there. What they say need not be a date.
bool ScanDate(std::u16string_view text, ce::SYSTEMTIME* date);

// The last error, which is positive, for a time that does not exist.
ce::HRESULT ToDate(const ce::SYSTEMTIME& time, ce::DATE* date);

}  // namespace corvane
