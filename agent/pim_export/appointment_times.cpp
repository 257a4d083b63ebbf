#include "agent/pim_export/appointment_times.h"

#include "agent/time/file_time.h"
#include "agent/vocabulary/calendar_words.h"
#include "platform/clock.h"
#include "platform/status.h"
#include "platform/system.h"

namespace corvane {

using namespace ce;

namespace {

constexpr LONG kDefaultDuration = 60;
constexpr DWORD kLongerSeriesVersion = 4;
HRESULT ShiftDate(DATE date, LONGLONG minutes, DATE* shifted) {
  SYSTEMTIME time{};
  FILETIME ticks{};
  if (!VariantTimeToSystemTime(date, &time) || !SystemTimeToFileTime(&time, &ticks)) {
    return E_UNEXPECTED;
  }
  ticks = AddSeconds(ticks, minutes * kSecondsPerMinute);
  if (!FileTimeToSystemTime(&ticks, &time) || !SystemTimeToVariantTime(&time, shifted)) {
    return E_UNEXPECTED;
  }
  return S_OK;
}

}  // namespace

HRESULT ReadAppointmentTimes(IAppointment* appointment, AppointmentTimes* times) {
  RETURN_IF_FAILED(appointment->get_Duration(&times->duration));
  RETURN_IF_FAILED(appointment->get_Start(&times->start));
  RETURN_IF_FAILED(appointment->get_End(&times->end));
  if (times->duration == 0) times->duration = kDefaultDuration;
  if (times->start == 0.0 && times->end != 0.0) {
    return ShiftDate(times->end, -LONGLONG{times->duration}, &times->start);
  }
  if (times->end == 0.0 && times->start != 0.0) {
    return ShiftDate(times->start, times->duration, &times->end);
  }
  return S_OK;
}

HRESULT FindLastDay(const AppointmentTimes& times, bool isRecurring, DATE* lastDay, bool* known) {
  *known = false;
  OSVERSIONINFO version{};
  version.dwOSVersionInfoSize = sizeof(version);
  if (!GetVersionExW(&version)) return LastErrorStatus();
  const LONG days = times.duration / kMinutesPerDay;
  const bool longer = version.dwMajorVersion == kLongerSeriesVersion && isRecurring;
  *lastDay = times.start + (longer ? days : days - 1);
  *known = true;
  return S_OK;
}

}  // namespace corvane
