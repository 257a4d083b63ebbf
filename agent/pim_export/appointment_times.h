// When an appointment begins and ends, as far as it tells.
#pragma once

#include "platform/pocket_outlook_calendar.h"

namespace corvane {

struct AppointmentTimes {
  ce::LONG duration = 0;  // minutes
  ce::DATE start = ce::kNoDate;
  ce::DATE end = ce::kNoDate;
};

// An appointment without a Duration lasts an hour. Of Start and End the one that is 0.0 is reckoned
// from the other; both stay 0.0 when both are. A date that cannot be reckoned with is E_UNEXPECTED.
ce::HRESULT ReadAppointmentTimes(ce::IAppointment* appointment, AppointmentTimes* times);

// The day that an all-day event is written to end on, `*known` when it could be told. A system of
// version 4 counts a day more for a series. When the system does not tell its version the status is
// the last error, which is mostly positive.
ce::HRESULT FindLastDay(const AppointmentTimes& times, bool isRecurring, ce::DATE* lastDay,
                        bool* known);

}  // namespace corvane
