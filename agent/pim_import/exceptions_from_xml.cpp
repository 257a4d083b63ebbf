#include "agent/pim_import/exceptions_from_xml.h"

#include <array>
#include <string_view>

#include "agent/log/log.h"
#include "agent/pim_import/appointment_from_xml.h"
#include "agent/pim_import/date_values.h"
#include "agent/pim_import/field_values.h"
#include "agent/pim_import/scan.h"
#include "agent/vocabulary/recurrence_words.h"

namespace corvane {

using namespace ce;

namespace {

HRESULT ToSystemTime(DATE date, SYSTEMTIME* time) {
  return VariantTimeToSystemTime(date, time) ? S_OK : E_UNEXPECTED;
}

// The text of a date, whose parts may stand in several nodes. Of the blanks that may surround its
// numbers one is as good as many, so this is room enough.
class DateText {
 public:
  void Append(std::u16string_view part) {
    for (const WCHAR character : part) {
      const bool blank = kBlanks.find(character) != kBlanks.npos;
      if (blank && afterBlank_) continue;
      if (length_ == text_.size()) return;
      text_[length_++] = character;
      afterBlank_ = blank;
    }
  }
  std::u16string_view view() const { return {text_.data(), length_}; }

 private:
  std::array<WCHAR, 16> text_{};
  std::size_t length_ = 0;
  bool afterBlank_ = false;
};

HRESULT ReadOwnText(IXMLDOMNode* exception, DateText* text) {
  const HRESULT status = ForEachChild(exception, [&](IXMLDOMNode* child, const Bstr& name) {
    if (name.view() != u"#text" && name.view() != u"#cdata-section") return S_OK;
    Variant part;
    RETURN_UNLESS_OK(child->get_nodeValue(part.put()));
    text->Append(part.text());
    return S_OK;
  });
  return status == S_FALSE ? S_OK : status;
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
  DateText text;
  RETURN_UNLESS_OK(ReadOwnText(exception, &text));
  SYSTEMTIME start{};
  RETURN_UNLESS_OK(ToSystemTime(seriesStart, &start));
  LOG(u"startTime hr = %d, minute = %d, day = %d, month = %d", start.wHour, start.wMinute,
      start.wDay, start.wMonth);
  SYSTEMTIME day{};
  if (!ScanDate(text.view(), &day)) return E_INVALIDARG;
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
