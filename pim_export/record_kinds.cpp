#include "pim_export/record_kinds.h"

#include <algorithm>
#include <iterator>

#include "pim_export/contact_to_xml.h"

namespace corvane {

using namespace ce;

namespace {

template <LONG variant>
HRESULT ExportContact(IXMLDOMDocument* document, IXMLDOMNode* parent, IUnknown* item) {
  return AddContactToXML(document, parent, static_cast<IContact*>(item), variant);
}

HRESULT DeleteContact(IUnknown* item) {
  return static_cast<IContact*>(item)->Delete();
}

// The handheld's folder may hold items of a kind that this agent has no form for.
HRESULT ExportUnsupported(IXMLDOMDocument*, IXMLDOMNode*, IUnknown*) {
  return E_NOTIMPL;
}

HRESULT DeleteUnsupported(IUnknown*) {
  return E_NOTIMPL;
}

constexpr RecordKind kRecordKinds[] = {
    {kPIMDataAppointment, olFolderCalendar, &IID_IAppointment, ExportUnsupported, DeleteUnsupported,
     u"AddAppointmentToXML returned %ld", u"kPIMDataAppointment returned %ld"},
    {kPIMDataContact, olFolderContacts, &IContact::kIid, ExportContact<1>, DeleteContact,
     u"AddContactToXML returned %ld", u"AddContactToXML returned %ld"},
    {kPIMDataTask, olFolderTasks, &IID_ITask, ExportUnsupported, DeleteUnsupported,
     u"AddTaskToXML returned %ld", u"AddTaskToXML returned %ld"},
    {kPIMDataContact2, olFolderContacts, &IContact::kIid, ExportContact<2>, DeleteContact,
     u"AddContactToXML returned %ld", u"AddContactToXML returned %ld"},
};

}  // namespace

const RecordKind* FindRecordKind(DWORD kind) {
  const auto* found = std::ranges::find(kRecordKinds, kind, &RecordKind::kind);
  return found == std::end(kRecordKinds) ? nullptr : found;
}

DWORD InputWord(const BYTE* input) {
  return input[0] | static_cast<DWORD>(input[1]) << 8 | static_cast<DWORD>(input[2]) << 16 |
         static_cast<DWORD>(input[3]) << 24;
}

}  // namespace corvane
