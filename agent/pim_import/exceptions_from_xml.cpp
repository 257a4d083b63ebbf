#include "agent/pim_import/exceptions_from_xml.h"

#include "agent/log/log.h"
#include "agent/pim_import/appointment_from_xml.h"
#include "agent/pim_import/child_nodes.h"
#include "agent/pim_import/date_values.h"
#include "agent/pim_import/field_values.h"
#include "agent/pim_import/record_status.h"
#include "agent/vocabulary/recurrence_words.h"

namespace corvane {

using namespace ce;

namespace {

HRESULT ToSystemTime(DATE date, SYSTEMTIME* time) {
  return VariantTimeToSystemTime(date, time) ? S_OK : E_UNEXPECTED;
}

// A text that is missing is no date.
HRESULT ReadOwnText(IXMLDOMNode* exception, VARIANT* text) {
  const HRESULT status = GetNodeText(exception, text);
  return status == E_FAIL ? S_OK : status;
}

// The occurrence of a day at the time of day of `start`; null when there is none.
HRESULT FindOccurrence(IRecurrencePattern* pattern, const SYSTEMTIME& day, const SYSTEMTIME& start,
                       ComPtr<IAppointment>* occurrence) {
  SYSTEMTIME time = start;
  time.wYear = day.wYear;
  time.wMonth = day.wMonth;
  time.wDay = day.wDay;
  time.wDayOfWeek = 0;
  LOG(u"exceptionTime hr = %d, minute = %d, day = %d, month = %d", time.wHour, time.wMinute,
      time.wDay, time.wMonth);
  DATE date = kNoDate;
  RETURN_UNLESS_OK(ToDate(time, &date));
  const HRESULT status = pattern->GetOccurrence(date, occurrence->put());
  LOG(u"pAppintment is 0x%08X, hr is 0x%08X", static_cast<const void*>(occurrence->get()), status);
  if (!*occurrence) return Failed(status) && status != E_INVALIDARG ? status : S_OK;
  return status;
}

HRESULT DeleteOccurrence(IXMLDOMNode* exception, IRecurrencePattern* pattern, DATE seriesStart) {
  Variant text;
  RETURN_UNLESS_OK(ReadOwnText(exception, text.put()));
  SYSTEMTIME start{};
  RETURN_UNLESS_OK(ToSystemTime(seriesStart, &start));
  LOG(u"startTime hr = %d, minute = %d, day = %d, month = %d", start.wHour, start.wMinute,
      start.wDay, start.wMonth);
  SYSTEMTIME day{};
  if (!ScanDate(text.text(), &day)) return E_INVALIDARG;
  ComPtr<IAppointment> occurrence;
  RETURN_UNLESS_OK(FindOccurrence(pattern, day, start, &occurrence));
  return occurrence ? occurrence->Delete() : S_OK;
}

HRESULT ChangeOccurrence(IXMLDOMNode* exception, IRecurrencePattern* pattern, DATE seriesStart) {
  SYSTEMTIME start{};
  RETURN_UNLESS_OK(ToSystemTime(seriesStart, &start));
  DATE original = kNoDate;
  RETURN_UNLESS_OK(GetChildDate(exception, kOriginalDateElement, &original));
  SYSTEMTIME day{};
  RETURN_UNLESS_OK(ToSystemTime(original, &day));
  ComPtr<IAppointment> occurrence;
  RETURN_UNLESS_OK(FindOccurrence(pattern, day, start, &occurrence));
  if (!occurrence) return S_OK;
  const HRESULT status = ParseXMLAppointmentToRecord(exception, occurrence.get(), false);
  LOG(u"ParseXMLAppointmentToRecord returned 0x%08X", status);
  return status;
}

}  // namespace

HRESULT ParseXMLExceptions(IXMLDOMNode* recurrence, IRecurrencePattern* pattern, DATE seriesStart) {
  HRESULT status = ForEachChild(recurrence, [&](IXMLDOMNode* child, const Bstr& name) {
    HRESULT applied = S_OK;
    if (name.view() == kDeletedExceptionElement) {
      applied = DeleteOccurrence(child, pattern, seriesStart);
    } else if (name.view() == kChangedExceptionElement) {
      applied = ChangeOccurrence(child, pattern, seriesStart);
    }
    LOG(u"bstrNodeName = %s", name);
    return applied;
  });
  if (status == S_FALSE) status = S_OK;
  LOG(u"returning 0x%08X", status);
  return status;
}

}  // namespace corvane
