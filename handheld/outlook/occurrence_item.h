// Makers of single occurrences of a series (IAppointment).
#pragma once

#include <cstdint>

#include "handheld/outlook/session.h"
#include "handheld/store/exception_row.h"
#include "platform/pocket_outlook_calendar.h"

namespace ce::host {

// The occurrence of a stored series that begins at `date`, to the second, or would begin then had
// it not been changed. E_INVALIDARG and null when there is none.
//
// Saving or deleting it writes the day's exception. Both fail with E_INVALIDARG when the series has
// gone since or has no such day any more; saving also when the occurrence was deleted.
HRESULT LoadOccurrence(const SessionPtr& session, std::uint32_t oid, DATE date,
                       IAppointment** occurrence);

// A changed occurrence that was read already; the object starts with the caller's reference.
IAppointment* MakeOccurrence(const SessionPtr& session, std::uint32_t oid, local_days originalDay,
                             const AppointmentFields& fields);

}  // namespace ce::host
