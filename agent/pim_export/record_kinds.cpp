#include "agent/pim_export/record_kinds.h"

#include <algorithm>
#include <iterator>

#include "agent/pim_export/appointment_to_xml.h"
#include "agent/pim_export/contact_to_xml.h"
#include "agent/pim_export/task_to_xml.h"
#include "agent/vocabulary/outlook_session.h"
#include "platform/pocket_outlook_calendar.h"

namespace corvane {

using namespace ce;

namespace {

template <LONG variant>
HRESULT ExportContact(IXMLDOMDocument* document, IXMLDOMNode* parent, IUnknown* item) {
  return AddContactToXML(document, parent, static_cast<IContact*>(item), variant);
}

HRESULT ExportAppointment(IXMLDOMDocument* document, IXMLDOMNode* parent, IUnknown* item) {
  return AddAppointmentToXML(document, parent, static_cast<IAppointment*>(item));
}

HRESULT ExportTask(IXMLDOMDocument* document, IXMLDOMNode* parent, IUnknown* item) {
  return AddTaskToXML(document, parent, static_cast<ITask*>(item));
}

constexpr RecordKind kRecordKinds[] = {
    {kPIMDataAppointment, olFolderCalendar, &IAppointment::kIid, ExportAppointment,
     DeleteItem<IAppointment>, u"AddAppointmentToXML returned %ld",
     u"kPIMDataAppointment returned %ld"},
    {kPIMDataContact, olFolderContacts, &IContact::kIid, ExportContact<1>, DeleteItem<IContact>,
     u"AddContactToXML returned %ld", u"AddContactToXML returned %ld"},
    {kPIMDataTask, olFolderTasks, &ITask::kIid, ExportTask, DeleteItem<ITask>,
     u"AddTaskToXML returned %ld", u"AddTaskToXML returned %ld"},
    {kPIMDataContact2, olFolderContacts, &IContact::kIid, ExportContact<2>, DeleteItem<IContact>,
     u"AddContactToXML returned %ld", u"AddContactToXML returned %ld"},
};

}  // namespace

const RecordKind* FindRecordKind(DWORD kind) {
  const auto* found = std::ranges::find(kRecordKinds, kind, &RecordKind::kind);
  return found == std::end(kRecordKinds) ? nullptr : found;
}

}  // namespace corvane
