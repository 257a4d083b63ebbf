#include "agent/pim_import/appointment_from_xml.h"

#include "agent/log/log.h"
#include "agent/pim_import/exceptions_from_xml.h"
#include "agent/pim_import/field_values.h"
#include "agent/pim_import/record_decision.h"
#include "agent/pim_import/record_fields.h"
#include "agent/pim_import/recurrence_from_xml.h"
#include "agent/vocabulary/appointment_fields.h"
#include "platform/status.h"
#include "platform/system.h"

namespace corvane {

using namespace ce;

namespace {

// Up to this version an all-day event that recurs ends on the day after its last.
constexpr DWORD kLastMajorWithLongSeries = 4;

HRESULT ReadMajorVersion(DWORD* major) {
  OSVERSIONINFO version{};
  version.dwOSVersionInfoSize = sizeof(version);
  if (!GetVersionExW(&version)) return LastErrorStatus();
  *major = version.dwMajorVersion;
  return S_OK;
}

// The pattern to be set, of an item without exceptions: they would not fit another one.
HRESULT GetCleanPattern(IAppointment* appointment, ComPtr<IRecurrencePattern>* pattern) {
  RETURN_UNLESS_OK(appointment->GetRecurrencePattern(pattern->put()));
  ComPtr<IExceptions> exceptions;
  RETURN_UNLESS_OK((*pattern)->get_Exceptions(exceptions.put()));
  INT count = 0;
  RETURN_UNLESS_OK(exceptions->get_Count(&count));
  if (count <= 0) return S_OK;
  LOG(u"Clearing old Recurrence Pattern");
  RETURN_UNLESS_OK(appointment->ClearRecurrencePattern());
  RETURN_UNLESS_OK(appointment->Save());
  return appointment->GetRecurrencePattern(pattern->put());
}

// Puts the fields of one element into an appointment, in the order of the vocabulary.
class AppointmentReader {
 public:
  AppointmentReader(IXMLDOMNode* node, IAppointment* appointment)
      : node_(node), appointment_(appointment) {}

  HRESULT Put(const AppointmentField& field);
  HRESULT PutExceptions();

 private:
  HRESULT PutFlag(const AppointmentField& field, VARIANT_BOOL* flag);
  HRESULT PutLong(const AppointmentField& field);
  HRESULT PutPrivate(const AppointmentField& field);
  HRESULT PutStart(const AppointmentField& field);
  HRESULT PutEnd(const AppointmentField& field);
  HRESULT PutWholeDays(const AppointmentField& field);
  HRESULT PutRecurrence(const AppointmentField& field);

  IXMLDOMNode* const node_;
  IAppointment* const appointment_;
  VARIANT_BOOL allDay_ = VARIANT_FALSE;
  VARIANT_BOOL recurring_ = VARIANT_FALSE;
  VARIANT_BOOL reminder_ = VARIANT_FALSE;
  DATE start_ = kNoDate;
};

HRESULT AppointmentReader::Put(const AppointmentField& field) {
  switch (field.kind) {
    case AppointmentFieldKind::kText:
      return PutText(node_, field.element, appointment_, field.putText);
    case AppointmentFieldKind::kNotes:
      return PutNotes(node_, field.element, appointment_, field.getText, field.putText,
                      UnreadableNotes::kNone);
    case AppointmentFieldKind::kAllDay:
      return PutFlag(field, &allDay_);
    case AppointmentFieldKind::kBusyStatus:
      return PutLong(field);
    case AppointmentFieldKind::kStart:
      return PutStart(field);
    case AppointmentFieldKind::kIsRecurring:
      return ReadFlag(node_, field.element, &recurring_);
    case AppointmentFieldKind::kEnd:
      return allDay_ ? PutWholeDays(field) : PutEnd(field);
    case AppointmentFieldKind::kPrivate:
      return PutPrivate(field);
    case AppointmentFieldKind::kHasReminder:
      return PutFlag(field, &reminder_);
    case AppointmentFieldKind::kReminderMinutes:
      return reminder_ ? PutLong(field) : S_OK;
    case AppointmentFieldKind::kRecurrence:
      return PutRecurrence(field);
    case AppointmentFieldKind::kCategoryList:
      return PutCategories(node_, field.element, appointment_, field.putText);
    case AppointmentFieldKind::kInk:
      return S_OK;
  }
  return E_UNEXPECTED;
}

HRESULT AppointmentReader::PutFlag(const AppointmentField& field, VARIANT_BOOL* flag) {
  RETURN_UNLESS_OK(ReadFlag(node_, field.element, flag));
  return (appointment_->*field.putFlag)(*flag);
}

HRESULT AppointmentReader::PutLong(const AppointmentField& field) {
  LONG number = 0;
  RETURN_UNLESS_OK(GetChildLongDefault(node_, field.element, &number, 0));
  return (appointment_->*field.putLong)(number);
}

HRESULT AppointmentReader::PutPrivate(const AppointmentField& field) {
  VARIANT_BOOL isPrivate = VARIANT_FALSE;
  RETURN_UNLESS_OK(ReadFlag(node_, field.element, &isPrivate));
  return (appointment_->*field.putLong)(isPrivate ? olPrivate : olNormal);
}

HRESULT AppointmentReader::PutStart(const AppointmentField& field) {
  const auto read = allDay_ ? ReadDate : ReadDateTime;
  RETURN_UNLESS_OK(read(node_, field.element, &start_));
  return appointment_->put_Start(start_);
}

HRESULT AppointmentReader::PutEnd(const AppointmentField& field) {
  DATE end = kNoDate;
  RETURN_UNLESS_OK(ReadDateTime(node_, field.element, &end));
  return appointment_->put_End(end);
}

// An all-day event has no end but a number of days, so its last one must be there.
HRESULT AppointmentReader::PutWholeDays(const AppointmentField& field) {
  DATE last = kNoDate;
  RETURN_UNLESS_OK(GetChildDate(node_, field.element, &last));
  LONGLONG days = static_cast<LONGLONG>(last - start_);
  DWORD major = 0;
  RETURN_UNLESS_OK(ReadMajorVersion(&major));
  if (major > kLastMajorWithLongSeries || !recurring_) ++days;
  const LONGLONG minutes = days * kMinutesPerDay;
  if (minutes != static_cast<LONG>(minutes)) return E_INVALIDARG;
  return appointment_->put_Duration(static_cast<LONG>(minutes));
}

HRESULT AppointmentReader::PutRecurrence(const AppointmentField& field) {
  if (!recurring_) return appointment_->ClearRecurrencePattern();
  ComPtr<IRecurrencePattern> pattern;
  RETURN_UNLESS_OK(GetCleanPattern(appointment_, &pattern));
  ComPtr<IXMLDOMNode> recurrence;
  RETURN_UNLESS_OK(FindChildElement(node_, field.element, recurrence.put()));
  return ParseXMLRecurrence(recurrence.get(), pattern.get());
}

// The occurrences are those of the stored item.
HRESULT AppointmentReader::PutExceptions() {
  if (!recurring_) return S_OK;
  ComPtr<IRecurrencePattern> pattern;
  RETURN_UNLESS_OK(appointment_->GetRecurrencePattern(pattern.put()));
  ComPtr<IXMLDOMNode> recurrence;
  RETURN_UNLESS_OK(FindChildElement(node_, kRecurrenceElement, recurrence.put()));
  return ParseXMLExceptions(recurrence.get(), pattern.get(), start_);
}

HRESULT FillAndSave(IXMLDOMNode* record, IUnknown* item, bool* saved) {
  const HRESULT status =
      ParseXMLAppointmentToRecord(record, static_cast<IAppointment*>(item), true);
  *saved = status == S_OK;
  return status;
}

HRESULT DeleteItem(IUnknown* item) {
  return static_cast<IAppointment*>(item)->Delete();
}

HRESULT GetOid(IUnknown* item, LONG* oid) {
  return static_cast<IAppointment*>(item)->get_Oid(oid);
}

constexpr RecordRules kAppointmentRules{
    .folder = olFolderCalendar,
    .itemInterface = &IAppointment::kIid,
    .needsFolder = false,
    .deletesFailedItem = true,
    .fillAndSave = FillAndSave,
    .deleteItem = DeleteItem,
    .getOid = GetOid,
    .enteringTrace = u"Entering ParseXMLAppointment",
    .addTrace = u"Found something to Add",
    .exitingTrace = u"Exiting ParseXMLAppointment hr = %ld",
};

}  // namespace

HRESULT ParseXMLAppointment(IXMLDOMNode* record, IPOutlookApp* app, CorvaneStream* stream) {
  return ApplyRecord(kAppointmentRules, record, app, stream);
}

HRESULT ParseXMLAppointmentToRecord(IXMLDOMNode* node, IAppointment* appointment, bool fullRecord) {
  AppointmentReader reader(node, appointment);
  for (const AppointmentField* field : AppointmentImportFields()) {
    if (fullRecord || field->readInException) RETURN_UNLESS_OK(reader.Put(*field));
  }
  RETURN_UNLESS_OK(appointment->Save());
  return fullRecord ? reader.PutExceptions() : S_OK;
}

}  // namespace corvane
