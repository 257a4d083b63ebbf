// How records of Pocket Outlook travel.
#pragma once

#include "agent/xml/record_document.h"

namespace corvane {

// Records that travel together, except the first of a download of chosen records, which travels
// alone.
inline constexpr ce::DWORD kRecordsPerDocument = 5;

}  // namespace corvane
