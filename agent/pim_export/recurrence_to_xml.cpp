#include "agent/pim_export/recurrence_to_xml.h"

#include <array>

#include "agent/log/log.h"
#include "agent/pim_export/appointment_to_xml.h"
#include "agent/vocabulary/recurrence_words.h"
#include "agent/xml/document.h"
#include "agent/xml/values.h"
#include "platform/com_ptr.h"
#include "platform/status.h"

namespace corvane {

using namespace ce;

namespace {

struct PatternRecord {
  IXMLDOMDocument* document;
  IXMLDOMElement* element;
  IRecurrencePattern* pattern;
};

// "1, 3, 5" for Monday, Wednesday and Friday; empty for no day.
using DayListText = std::array<WCHAR, 3 * kDaysInWeek>;
DayListText DayList(LONG mask) {
  DayListText text{};
  auto end = text.begin();
  for (int day = 0; day < kDaysInWeek; ++day) {
    if (!(mask & 1 << day)) continue;
    if (end != text.begin()) {
      *end++ = u',';
      *end++ = u' ';
    }
    *end++ = static_cast<WCHAR>(u'0' + day);
  }
  return text;
}

HRESULT AddTypeChild(const PatternRecord& record, const RecurrenceChild& child) {
  LONG value = 0;
  RETURN_IF_FAILED((record.pattern->*child.get)(&value));
  if (child.isDayList) {
    return AddStringElement(record.document, record.element, child.element, DayList(value).data());
  }
  // The least number, which only a damaged store holds, becomes the greatest.
  const DWORD number = static_cast<DWORD>(value) - static_cast<DWORD>(child.offset);
  return AddLongElement(record.document, record.element, child.element, static_cast<LONG>(number));
}

// An interval of 1 goes without saying.
HRESULT AddInterval(const PatternRecord& record) {
  LONG interval = 1;
  RETURN_IF_FAILED(record.pattern->get_Interval(&interval));
  if (interval == 1) return S_OK;
  return AddLongElement(record.document, record.element, kFrequencyElement, interval);
}

HRESULT AddType(const PatternRecord& record, LONG type) {
  const RecurrenceType* const row = FindRecurrenceType(type);
  if (!row) return S_OK;
  LOG(row->exportTrace);
  RETURN_IF_FAILED(AddStringElement(record.document, record.element, kTypeElement, row->text));
  for (const RecurrenceChild& child : row->children) RETURN_IF_FAILED(AddTypeChild(record, child));
  return row->hasInterval ? AddInterval(record) : S_OK;
}

HRESULT AddEnd(const PatternRecord& record) {
  VARIANT_BOOL endless = VARIANT_FALSE;
  RETURN_IF_FAILED(record.pattern->get_NoEndDate(&endless));
  if (endless) return AddLongElement(record.document, record.element, kEndDateElement, 0);
  DATE end = kNoDate;
  RETURN_IF_FAILED(record.pattern->get_PatternEndDate(&end));
  RETURN_IF_FAILED(AddDateElement(record.document, record.element, kEndDateElement, end));
  LONG occurrences = 0;
  RETURN_IF_FAILED(record.pattern->get_Occurrences(&occurrences));
  return AddLongElement(record.document, record.element, kOccurrencesElement, occurrences);
}

HRESULT AddChanged(const PatternRecord& record, IException* exception, DATE originalDate) {
  LOG(u"get_AppointmentItem");
  ComPtr<IAppointment> item;
  RETURN_IF_FAILED(exception->get_AppointmentItem(item.put()));
  ComPtr<IXMLDOMElement> changed;
  RETURN_IF_FAILED(AddAppointmentFieldsToXML(record.document, item.get(), kChangedExceptionElement,
                                             changed.put(), false));
  RETURN_IF_FAILED(
      AddDateElement(record.document, changed.get(), kOriginalDateElement, originalDate));
  return record.element->appendChild(changed.get(), nullptr);
}

HRESULT AddException(const PatternRecord& record, IException* exception) {
  VARIANT_BOOL deleted = VARIANT_FALSE;
  RETURN_IF_FAILED(exception->get_Deleted(&deleted));
  DATE originalDate = kNoDate;
  RETURN_IF_FAILED(exception->get_OriginalDate(&originalDate));
  if (!deleted) return AddChanged(record, exception, originalDate);
  // The occurrence that cannot be named is lost to the desktop; the record is worth more than it.
  static_cast<void>(
      AddDateElement(record.document, record.element, kDeletedExceptionElement, originalDate));
  return S_OK;
}

HRESULT AddExceptions(const PatternRecord& record) {
  ComPtr<IExceptions> exceptions;
  RETURN_IF_FAILED(record.pattern->get_Exceptions(exceptions.put()));
  if (!exceptions) return E_POINTER;
  INT count = 0;
  RETURN_IF_FAILED(exceptions->get_Count(&count));
  for (INT index = 1; index <= count; ++index) {
    ComPtr<IException> exception;
    RETURN_IF_FAILED(exceptions->Item(index, exception.put()));
    if (!exception) return E_POINTER;
    RETURN_IF_FAILED(AddException(record, exception.get()));
  }
  return S_OK;
}

}  // namespace

HRESULT AddRecurrenceToChild(IXMLDOMDocument* document, IXMLDOMNode* parent,
                             IRecurrencePattern* pattern, bool withExceptions) {
  LOG(u"AddRecurrenceToChild");
  if (!pattern) return E_UNEXPECTED;
  if (!parent) return E_POINTER;
  LONG type = 0;
  RETURN_IF_FAILED(pattern->get_RecurrenceType(&type));
  ComPtr<IXMLDOMElement> element;
  RETURN_IF_FAILED(CreateXMLElement(document, kRecurrenceElement, element.put()));
  const PatternRecord record{document, element.get(), pattern};
  RETURN_IF_FAILED(AddType(record, type));
  RETURN_IF_FAILED(AddEnd(record));
  if (withExceptions) RETURN_IF_FAILED(AddExceptions(record));
  return parent->appendChild(element.get(), nullptr);
}

}  // namespace corvane
