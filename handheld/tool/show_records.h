// Lists what is on a handheld, as a table or as lines of JSON.
#pragma once

#include "handheld/tool/report.h"
#include "handheld/tool/session.h"

namespace tool {

// `Record` is one of records.h. Each with the number by which the Remove... functions know it.
// Times of messages and calls are those of the handheld's zone, in JSON UTC.
template <typename Record>
Outcome ShowRecords(Session& session, bool json, const Report& report);

}  // namespace tool
