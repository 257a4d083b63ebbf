#include "agent/pim_import/contact_from_xml.h"

#include "agent/log/log.h"
#include "agent/pim_import/contact_lists.h"
#include "agent/pim_import/field_values.h"
#include "agent/pim_import/record_decision.h"
#include "agent/pim_import/record_fields.h"
#include "agent/vocabulary/contact_fields.h"
#include "platform/com_ptr.h"
#include "platform/status.h"
#include "platform/system.h"

namespace corvane {

using namespace ce;

namespace {

HRESULT PutStreet(const ChildElements& record, IContact* contact, const ContactField& field) {
  Bstr text;
  RETURN_UNLESS_OK(ReadMultilineText(record, field.element, &text));
  return (contact->*field.putText)(text.get());
}

HRESULT PutYomiText(const ChildElements& record, IContact* contact, const ContactField& field) {
  const HRESULT status = PutText(record, field.element, contact, field.putText);
  return status == E_NOTIMPL ? S_OK : status;
}

HRESULT PutEmailList(const ChildElements& record, IContact* contact, const ContactField& field) {
  const Bstr none(u"");
  for (const ContactEmailSlot& slot : ContactEmailSlots()) {
    RETURN_UNLESS_OK((contact->*slot.put)(none.get()));
  }
  ComPtr<IXMLDOMNode> list;
  const HRESULT status = FindChildElement(record, field.element, list.put());
  if (status == E_FAIL) return S_OK;
  RETURN_UNLESS_OK(status);
  RETURN_IF_FAILED(ParseXMLEmailAddresses(list.get(), contact));
  return S_OK;
}

HRESULT PutDate(const ChildElements& record, IContact* contact, const ContactField& field) {
  DATE date = kNoDate;
  RETURN_UNLESS_OK(ReadDate(record, field.element, &date));
  return (contact->*field.putDate)(date);
}

HRESULT PutField(const ChildElements& record, IContact* contact, const ContactField& field) {
  switch (field.kind) {
    case ContactFieldKind::kEmailList:
      return PutEmailList(record, contact, field);
    case ContactFieldKind::kMultilineText:
      return PutStreet(record, contact, field);
    case ContactFieldKind::kCategoryList:
      return PutCategories(record, field.element, contact, field.putText);
    case ContactFieldKind::kNotes:
      return PutNotes(record, field.element, contact, field.getText, field.putText,
                      UnreadableNotes::kFail);
    case ContactFieldKind::kInk:
      return S_OK;
    case ContactFieldKind::kYomiText:
      return PutYomiText(record, contact, field);
    case ContactFieldKind::kDate:
      return PutDate(record, contact, field);
    default:
      return PutText(record, field.element, contact, field.putText);
  }
}

HRESULT PutFields(const ChildElements& record, IContact* contact) {
  HRESULT status = S_OK;
  bool yomiAsked = false;
  bool yomi = false;
  for (const ContactField& field : ContactFields()) {
    if (field.kind == ContactFieldKind::kYomiText) {
      if (!yomiAsked) {
        yomiAsked = true;
        yomi = GetSystemDefaultLangID() == kLangJapanese;
        if (yomi) LOG(u"Putting Yomi Fields");
      }
      if (!yomi) continue;
    }
    if (status == S_OK) status = PutField(record, contact, field);
  }
  return status;
}

HRESULT FillAndSaveContact(IXMLDOMNode* record, IUnknown* item, bool* saved) {
  IContact* const contact = static_cast<IContact*>(item);
  ChildElements fields(record);
  HRESULT status = fields.Index();
  if (status == S_OK) status = PutFields(fields, contact);
  LOG(u"Before Save");
  if (status != S_OK) return status;
  status = contact->Save();
  *saved = Succeeded(status);
  return status;
}

constexpr RecordRules kContactRules{
    .folder = olFolderContacts,
    .itemInterface = &IContact::kIid,
    .needsFolder = false,
    .deletesFailedItem = false,
    .fillAndSave = FillAndSaveContact,
    .deleteItem = DeleteItem<IContact>,
    .getOid = GetItemOid<IContact>,
    .enteringTrace = u"Entering ParseXMLContact",
    .addTrace = u"Found something to Add, yeah",
    .exitingTrace = u"Exiting ParseXMLContact, hr = %ld (0x%08X)",
};

}  // namespace

HRESULT ParseXMLContact(IXMLDOMNode* record, IPOutlookApp* app, CorvaneStream* stream, LONG) {
  return ApplyRecord(kContactRules, record, app, stream);
}

}  // namespace corvane
