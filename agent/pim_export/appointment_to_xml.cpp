#include "agent/pim_export/appointment_to_xml.h"

#include "agent/log/log.h"
#include "agent/pim_export/appointment_times.h"
#include "agent/pim_export/item_fields.h"
#include "agent/vocabulary/appointment_fields.h"
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
  bool hasReminder = false;
  AppointmentTimes times = {};
};

HRESULT AddStart(AppointmentRecord& record, const AppointmentField& field) {
  RETURN_IF_FAILED(ReadAppointmentTimes(record.item, &record.times));
  const auto add = record.isAllDay ? AddDateElement : AddDateTimeElement;
  return add(record.document, record.element, field.element, record.times.start);
}

HRESULT AddEnd(const AppointmentRecord& record, const AppointmentField& field) {
  if (!record.isAllDay) {
    return AddDateTimeElement(record.document, record.element, field.element, record.times.end);
  }
  DATE lastDay = kNoDate;
  bool known = false;
  const HRESULT status = FindLastDay(record.times, record.isRecurring, &lastDay, &known);
  if (!known) return status;
  return AddDateElement(record.document, record.element, field.element, lastDay);
}

// An appointment is worth having without its note.
HRESULT AddNotes(const AppointmentRecord& record, const AppointmentField& field) {
  Bstr text;
  if (Failed((record.item->*field.getText)(text.put()))) return S_OK;
  return AddBSTRElement(record.document, record.element, field.element, text.address());
}

HRESULT AddField(AppointmentRecord& record, const AppointmentField& field) {
  switch (field.kind) {
    case AppointmentFieldKind::kText:
      return AddItemText(record, field.element, field.getText, field.valueTrace);
    case AppointmentFieldKind::kAllDay:
      return AddItemFlag(record, field.element, field.getFlag, &record.isAllDay);
    case AppointmentFieldKind::kCategoryList:
      return AddItemCategories(record, field.element, field.getText);
    case AppointmentFieldKind::kIsRecurring:
      return AddItemFlag(record, field.element, field.getFlag, &record.isRecurring);
    case AppointmentFieldKind::kRecurrence:
      return record.isRecurring ? AddItemRecurrence(record, true) : S_OK;
    case AppointmentFieldKind::kHasReminder:
      return AddItemFlag(record, field.element, field.getFlag, &record.hasReminder);
    case AppointmentFieldKind::kReminderMinutes:
      return record.hasReminder ? AddItemLong(record, field.element, field.getLong) : S_OK;
    case AppointmentFieldKind::kPrivate:
      return AddItemPrivacy(record, field.element, field.getLong);
    case AppointmentFieldKind::kStart:
      return AddStart(record, field);
    case AppointmentFieldKind::kEnd:
      return AddEnd(record, field);
    case AppointmentFieldKind::kBusyStatus:
      return AddItemLong(record, field.element, field.getLong);
    case AppointmentFieldKind::kNotes:
      return AddNotes(record, field);
    case AppointmentFieldKind::kInk:
      return AddItemInk(record, field.element);
  }
  return E_UNEXPECTED;
}

HRESULT AppendRecord(IXMLDOMDocument* document, IXMLDOMNode* parent, IAppointment* appointment) {
  if (!parent || !appointment) return E_POINTER;
  LONG oid = 0;
  RETURN_IF_FAILED(appointment->get_Oid(&oid));
  ComPtr<IXMLDOMElement> element;
  RETURN_IF_FAILED(
      AddAppointmentFieldsToXML(document, appointment, kCalendarElement, element.put(), true));
  RETURN_IF_FAILED(parent->appendChild(element.get(), nullptr));
  Bstr oidText(LongText(oid).data());
  if (!oidText) return E_OUTOFMEMORY;
  return SetElementAttribute(document, element.get(), u"Oid", oidText.address());
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
  HRESULT status = S_OK;
  for (const AppointmentField& field : AppointmentFields()) {
    if (!full && !field.writtenInException) continue;
    status = AddField(record, field);
    if (Failed(status)) break;
  }
  return status;
}

}  // namespace corvane
