// Makers of single occurrences of a series (IAppointment) and of its exceptions (IExceptions).
#pragma once

#include <cstdint>

#include "handheld/outlook/session.h"
#include "platform/pocket_outlook_calendar.h"

namespace ce::host {

// The occurrence of a stored series that begins at `date`, to the second, or would begin then had
// it not been changed. E_INVALIDARG and null when there is none.
//
// Saving or deleting it writes the day's exception. Both fail with E_INVALIDARG when the series has
// gone since or has no such day any more; saving also when the occurrence was deleted.
HRESULT LoadOccurrence(const SessionPtr& session, std::uint32_t oid, DATE date,
                       IAppointment** occurrence);

// The exceptions that are stored now; none for an item that never was (0).
HRESULT MakeExceptions(const SessionPtr& session, std::uint32_t oid, IExceptions** exceptions);
// Without any, for items whose series have no exceptions.
IExceptions* MakeNoExceptions();

}  // namespace ce::host
