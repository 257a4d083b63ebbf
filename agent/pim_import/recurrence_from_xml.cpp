#include "agent/pim_import/recurrence_from_xml.h"

#include <algorithm>
#include <limits>

#include "agent/log/log.h"
#include "agent/pim_import/field_values.h"
#include "agent/pim_import/scan.h"
#include "agent/vocabulary/recurrence_words.h"
#include "platform/com_ptr.h"

namespace corvane {

using namespace ce;

namespace {

// A sum beyond every mask stays there.
LONG SumOfDays(std::u16string_view text) {
  ULONGLONG sum = 0;
  bool blanksLeft = true;
  std::size_t word = 0;  // where the number at or behind `at` begins
  LONG day = 0;
  for (std::size_t at = 0; at < text.size();) {
    if (at == 0 || at > word) {
      word = std::min(text.find_first_not_of(kBlanks, at), text.size());
      day = TextToLong(text.substr(word));
    }
    if (day >= 0 && day < kDaysInWeek) sum += ULONGLONG{1} << day;
    std::size_t separator = blanksLeft ? text.find(u' ', at) : text.npos;
    blanksLeft = separator != text.npos;
    if (!blanksLeft) separator = text.find(u',', at);
    if (separator == text.npos) break;
    at = separator + 1;
  }
  return static_cast<LONG>(std::min<ULONGLONG>(sum, std::numeric_limits<LONG>::max()));
}

HRESULT PutChild(const ChildElements& recurrence, IRecurrencePattern* pattern,
                 const RecurrenceChild& child) {
  if (child.isDayList) {
    Variant days;
    RETURN_UNLESS_OK(GetChildValue(recurrence, child.element, days.put()));
    return ParseDaysOfWeek(days.text(), pattern);
  }
  LONG number = 0;
  RETURN_UNLESS_OK(GetChildLong(recurrence, child.element, &number));
  // The greatest number becomes the least, which no property takes either.
  const DWORD value = static_cast<DWORD>(number) + static_cast<DWORD>(child.offset);
  return (pattern->*child.put)(static_cast<LONG>(value));
}

HRESULT PutType(const ChildElements& recurrence, std::u16string_view text,
                IRecurrencePattern* pattern) {
  const auto types = RecurrenceTypes();
  const auto type =
      std::ranges::find_if(types, [&](const RecurrenceType& row) { return text == row.text; });
  if (type == types.end()) {
    LOG(u"Unmatched Type");
    return E_FAIL;
  }
  LOG(type->importTrace);
  RETURN_UNLESS_OK(pattern->put_RecurrenceType(type->type));
  for (const RecurrenceChild& child : type->children) {
    RETURN_UNLESS_OK(PutChild(recurrence, pattern, child));
  }
  if (!type->hasInterval) return S_OK;
  LONG interval = 1;
  RETURN_UNLESS_OK(GetChildLongDefault(recurrence, kFrequencyElement, &interval, 1));
  return pattern->put_Interval(interval);
}

HRESULT PutOccurrences(IRecurrencePattern* pattern, LONG occurrences) {
  if (occurrences < 1) return pattern->put_NoEndDate(VARIANT_TRUE);
  RETURN_UNLESS_OK(pattern->put_NoEndDate(VARIANT_FALSE));
  return pattern->put_Occurrences(occurrences);
}

HRESULT PutEndDate(const ChildElements& recurrence, IRecurrencePattern* pattern) {
  LONG presence = 0;
  RETURN_UNLESS_OK(GetChildLongDefault(recurrence, kEndDateElement, &presence, 0));
  if (presence == 0) return pattern->put_NoEndDate(VARIANT_TRUE);
  RETURN_UNLESS_OK(pattern->put_NoEndDate(VARIANT_FALSE));
  DATE end = kNoDate;
  RETURN_UNLESS_OK(GetChildDate(recurrence, kEndDateElement, &end));
  return pattern->put_PatternEndDate(end);
}

// A number of occurrences goes before an end date.
HRESULT PutEnd(const ChildElements& recurrence, IRecurrencePattern* pattern) {
  LONG occurrences = 0;
  const HRESULT status = GetChildLong(recurrence, kOccurrencesElement, &occurrences);
  if (status == E_FAIL) return PutEndDate(recurrence, pattern);
  return status == S_OK ? PutOccurrences(pattern, occurrences) : status;
}

}  // namespace

HRESULT ParseXMLRecurrence(IXMLDOMNode* node, IRecurrencePattern* pattern) {
  const ChildElements recurrence(node);
  Variant type;
  RETURN_UNLESS_OK(GetChildValue(recurrence, kTypeElement, type.put()));
  HRESULT status = PutType(recurrence, type.text(), pattern);
  if (status == S_OK) status = PutEnd(recurrence, pattern);
  LOG(u"returning %X", status);
  return status;
}

HRESULT ParseDaysOfWeek(std::u16string_view text, IRecurrencePattern* pattern) {
  LOG(u"ParseDaysOfWeek enter %s", text);
  const LONG mask = SumOfDays(text);
  const HRESULT status = pattern->put_DayOfWeekMask(mask);
  LOG(u"ParseDaysOfWeek exit");
  return status;
}

}  // namespace corvane
