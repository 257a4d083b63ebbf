#include "agent/pim_export/appointment_to_xml.h"

#include "agent/log/log.h"
#include "agent/pim_export/appointment_times.h"
#include "agent/pim_export/item_fields.h"
#include "agent/vocabulary/calendar_words.h"
#include "agent/xml/document.h"
#include "agent/xml/values.h"
#include "platform/com_ptr.h"
#include "platform/status.h"

namespace corvane {

using namespace ce;

namespace {

struct AppointmentRecord : ItemRecord<IAppointment> {
  bool isAllDay = false;
  bool isRecurring = false;
  AppointmentTimes times = {};
};

HRESULT AddStart(AppointmentRecord& record) {
  RETURN_IF_FAILED(ReadAppointmentTimes(record.item, &record.times));
  const auto add = record.isAllDay ? AddDateElement : AddDateTimeElement;
  return add(record.document, record.element, kEventStartElement, record.times.start);
}

HRESULT AddEnd(const AppointmentRecord& record) {
  if (!record.isAllDay) {
    return AddDateTimeElement(record.document, record.element, kEventEndElement, record.times.end);
  }
  DATE lastDay = kNoDate;
  bool known = false;
  const HRESULT status = FindLastDay(record.times, record.isRecurring, &lastDay, &known);
  if (!known) return status;
  return AddDateElement(record.document, record.element, kEventEndElement, lastDay);
}

// An appointment is worth having without its note.
HRESULT AddNotes(const AppointmentRecord& record) {
  Bstr text;
  if (Failed(record.item->get_Body(text.put()))) return S_OK;
  return AddBSTRElement(record.document, record.element, kNotesElement, text.address());
}

// What a changed occurrence has from its series.
HRESULT AddSeriesFields(AppointmentRecord& record) {
  RETURN_IF_FAILED(AddItemCategories(record));
  RETURN_IF_FAILED(AddItemFlag(record, kIsRecurringElement, &IAppointment::get_IsRecurring,
                               &record.isRecurring));
  if (record.isRecurring) RETURN_IF_FAILED(AddItemRecurrence(record, true));
  bool hasReminder = false;
  RETURN_IF_FAILED(
      AddItemFlag(record, kHasReminderElement, &IAppointment::get_ReminderSet, &hasReminder));
  if (hasReminder) {
    RETURN_IF_FAILED(AddItemLong(record, kReminderMinutesElement,
                                 &IAppointment::get_ReminderMinutesBeforeStart));
  }
  return AddItemPrivacy(record);
}

HRESULT AddFields(AppointmentRecord& record, bool full) {
  RETURN_IF_FAILED(AddItemSubject(record));
  RETURN_IF_FAILED(AddItemText(record, kLocationElement, &IAppointment::get_Location));
  RETURN_IF_FAILED(
      AddItemFlag(record, kAllDayEventElement, &IAppointment::get_AllDayEvent, &record.isAllDay));
  if (full) RETURN_IF_FAILED(AddSeriesFields(record));
  RETURN_IF_FAILED(AddStart(record));
  RETURN_IF_FAILED(AddEnd(record));
  RETURN_IF_FAILED(AddItemLong(record, kBusyStatusElement, &IAppointment::get_BusyStatus));
  RETURN_IF_FAILED(AddNotes(record));
  return AddItemInk(record);
}

HRESULT AppendRecord(IXMLDOMDocument* document, IXMLDOMNode* parent, IAppointment* appointment) {
  if (!parent || !appointment) return E_POINTER;
  LONG oid = 0;
  RETURN_IF_FAILED(appointment->get_Oid(&oid));
  ComPtr<IXMLDOMElement> element;
  RETURN_IF_FAILED(
      AddAppointmentFieldsToXML(document, appointment, kCalendarElement, element.put(), true));
  RETURN_IF_FAILED(parent->appendChild(element.get(), nullptr));
  return SetOid(document, element.get(), oid);
}

}  // namespace

HRESULT AddAppointmentToXML(IXMLDOMDocument* document, IXMLDOMNode* parent,
                            IAppointment* appointment) {
  LOG(u"AddAppointmentToXML");
  const HRESULT status = AppendRecord(document, parent, appointment);
  LOG(u"Exit AddAppointmentToXML hr = 0x%08X", status);
  return status;
}

HRESULT AddAppointmentFieldsToXML(IXMLDOMDocument* document, IAppointment* appointment,
                                  const WCHAR* name, IXMLDOMElement** element, bool full) {
  *element = nullptr;
  if (!appointment) return E_POINTER;
  RETURN_IF_FAILED(CreateXMLElement(document, name, element));
  AppointmentRecord record{{document, *element, appointment}};
  return AddFields(record, full);
}

}  // namespace corvane
