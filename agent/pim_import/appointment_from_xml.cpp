#include "agent/pim_import/appointment_from_xml.h"

#include "agent/log/log.h"
#include "agent/pim_import/exceptions_from_xml.h"
#include "agent/pim_import/field_values.h"
#include "agent/pim_import/record_decision.h"
#include "agent/pim_import/record_fields.h"
#include "agent/pim_import/recurrence_from_xml.h"
#include "agent/vocabulary/calendar_words.h"
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

// Puts the fields of one element into an appointment.
class AppointmentReader {
 public:
  AppointmentReader(IXMLDOMNode* node, IAppointment* appointment)
      : fields_(node), appointment_(appointment) {}

  HRESULT PutFields(bool fullRecord);
  HRESULT PutExceptions();

 private:
  HRESULT PutLong(const WCHAR* element, HRESULT (IAppointment::*put)(LONG));
  HRESULT PutStart();
  HRESULT PutEnd();
  HRESULT PutWholeDays();
  HRESULT PutSeriesFields();
  HRESULT PutRecurrence();

  ChildElements fields_;
  IAppointment* const appointment_;
  VARIANT_BOOL allDay_ = VARIANT_FALSE;
  VARIANT_BOOL recurring_ = VARIANT_FALSE;
  DATE start_ = kNoDate;
};

HRESULT AppointmentReader::PutFields(bool fullRecord) {
  RETURN_UNLESS_OK(fields_.Index());
  RETURN_UNLESS_OK(PutText(fields_, kSubjectElement, appointment_, &IAppointment::put_Subject));
  RETURN_UNLESS_OK(PutNotes(fields_, kNotesElement, appointment_, &IAppointment::get_Body,
                            &IAppointment::put_Body, UnreadableNotes::kNone));
  RETURN_UNLESS_OK(PutFlag(fields_, kAllDayEventElement, appointment_,
                           &IAppointment::put_AllDayEvent, &allDay_));
  RETURN_UNLESS_OK(PutLong(kBusyStatusElement, &IAppointment::put_BusyStatus));
  RETURN_UNLESS_OK(PutStart());
  // Of an occurrence it counts for the length alone.
  RETURN_UNLESS_OK(ReadFlag(fields_, kIsRecurringElement, &recurring_));
  RETURN_UNLESS_OK(allDay_ ? PutWholeDays() : PutEnd());
  if (fullRecord) RETURN_UNLESS_OK(PutSeriesFields());
  return PutText(fields_, kLocationElement, appointment_, &IAppointment::put_Location);
}

// What a changed occurrence has from its series.
HRESULT AppointmentReader::PutSeriesFields() {
  RETURN_UNLESS_OK(PutPrivacy(fields_, appointment_));
  VARIANT_BOOL reminder = VARIANT_FALSE;
  RETURN_UNLESS_OK(PutFlag(fields_, kHasReminderElement, appointment_,
                           &IAppointment::put_ReminderSet, &reminder));
  if (reminder) {
    RETURN_UNLESS_OK(
        PutLong(kReminderMinutesElement, &IAppointment::put_ReminderMinutesBeforeStart));
  }
  RETURN_UNLESS_OK(PutRecurrence());
  return PutCategories(fields_, kCategoriesElement, appointment_, &IAppointment::put_Categories);
}

HRESULT AppointmentReader::PutLong(const WCHAR* element, HRESULT (IAppointment::*put)(LONG)) {
  LONG number = 0;
  RETURN_UNLESS_OK(GetChildLongDefault(fields_, element, &number, 0));
  return (appointment_->*put)(number);
}

HRESULT AppointmentReader::PutStart() {
  const auto read = allDay_ ? ReadDate : ReadDateTime;
  RETURN_UNLESS_OK(read(fields_, kEventStartElement, &start_));
  return appointment_->put_Start(start_);
}

HRESULT AppointmentReader::PutEnd() {
  DATE end = kNoDate;
  RETURN_UNLESS_OK(ReadDateTime(fields_, kEventEndElement, &end));
  return appointment_->put_End(end);
}

// An all-day event has no end but a number of days, so its last one must be there.
HRESULT AppointmentReader::PutWholeDays() {
  DATE last = kNoDate;
  RETURN_UNLESS_OK(GetChildDate(fields_, kEventEndElement, &last));
  LONGLONG days = static_cast<LONGLONG>(last - start_);
  DWORD major = 0;
  RETURN_UNLESS_OK(ReadMajorVersion(&major));
  if (major > kLastMajorWithLongSeries || !recurring_) ++days;
  const LONGLONG minutes = days * kMinutesPerDay;
  if (minutes != static_cast<LONG>(minutes)) return E_INVALIDARG;
  return appointment_->put_Duration(static_cast<LONG>(minutes));
}

HRESULT AppointmentReader::PutRecurrence() {
  if (!recurring_) return appointment_->ClearRecurrencePattern();
  ComPtr<IRecurrencePattern> pattern;
  RETURN_UNLESS_OK(GetCleanPattern(appointment_, &pattern));
  ComPtr<IXMLDOMNode> recurrence;
  RETURN_UNLESS_OK(FindChildElement(fields_, kRecurrenceElement, recurrence.put()));
  return ParseXMLRecurrence(recurrence.get(), pattern.get());
}

// The occurrences are those of the stored item.
HRESULT AppointmentReader::PutExceptions() {
  if (!recurring_) return S_OK;
  ComPtr<IRecurrencePattern> pattern;
  RETURN_UNLESS_OK(appointment_->GetRecurrencePattern(pattern.put()));
  ComPtr<IXMLDOMNode> recurrence;
  RETURN_UNLESS_OK(FindChildElement(fields_, kRecurrenceElement, recurrence.put()));
  return ParseXMLExceptions(recurrence.get(), pattern.get(), start_);
}

HRESULT FillAndSaveAppointment(IXMLDOMNode* record, IUnknown* item, bool* saved) {
  const HRESULT status =
      ParseXMLAppointmentToRecord(record, static_cast<IAppointment*>(item), true);
  *saved = status == S_OK;
  return status;
}

constexpr RecordRules kAppointmentRules{
    .folder = olFolderCalendar,
    .itemInterface = &IAppointment::kIid,
    .needsFolder = false,
    .deletesFailedItem = true,
    .fillAndSave = FillAndSaveAppointment,
    .deleteItem = DeleteItem<IAppointment>,
    .getOid = GetItemOid<IAppointment>,
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
  RETURN_UNLESS_OK(reader.PutFields(fullRecord));
  RETURN_UNLESS_OK(appointment->Save());
  return fullRecord ? reader.PutExceptions() : S_OK;
}

}  // namespace corvane
