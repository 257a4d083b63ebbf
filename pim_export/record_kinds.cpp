#include "pim_export/record_kinds.h"

#include <algorithm>
#include <iterator>

#include "pim_export/contact_to_xml.h"

namespace corvane {

using namespace ce;

namespace {

constexpr GUID kAppointmentInterface{
    0x05F6F1E4, 0x6C4D, 0x4C1B, {0x9A, 0x2D, 0x1E, 0x1F, 0x6B, 0x84, 0x53, 0x11}};
constexpr GUID kTaskInterface{
    0x05F6F1E5, 0x6C4D, 0x4C1B, {0x9A, 0x2D, 0x1E, 0x1F, 0x6B, 0x84, 0x53, 0x11}};

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
    {kPIMDataAppointment, olFolderCalendar, &kAppointmentInterface, ExportUnsupported,
     DeleteUnsupported, u"AddAppointmentToXML returned %ld", u"kPIMDataAppointment returned %ld"},
    {kPIMDataContact, olFolderContacts, &IContact::kIid, ExportContact<1>, DeleteContact,
     u"AddContactToXML returned %ld", u"AddContactToXML returned %ld"},
    {kPIMDataTask, olFolderTasks, &kTaskInterface, ExportUnsupported, DeleteUnsupported,
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
