// Maker of a series' exceptions (IExceptions).
#pragma once

#include <cstdint>

#include "handheld/outlook/session.h"
#include "platform/pocket_outlook_calendar.h"

namespace ce::host {

// Those that are stored now; none for an item that never was (0).
HRESULT MakeExceptions(const SessionPtr& session, std::uint32_t oid, IExceptions** exceptions);
// Without any, for items whose series have no exceptions.
IExceptions* MakeNoExceptions();

}  // namespace ce::host
