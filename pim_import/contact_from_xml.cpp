#include "pim_import/contact_from_xml.h"

#include "base/status.h"
#include "log/log.h"
#include "pim_import/contact_lists.h"
#include "pim_import/field_values.h"
#include "pim_import/record_decision.h"
#include "platform/com_ptr.h"
#include "platform/system.h"
#include "vocabulary/contact_fields.h"

namespace corvane {

using namespace ce;

namespace {

HRESULT ReadLine(IXMLDOMNode* record, const WCHAR* name, BSTR* text) {
  VARIANT value;
  RETURN_IF_FAILED(GetChildValue(record, name, &value));
  *text = value.bstrVal;
  return S_OK;
}

HRESULT PutText(IXMLDOMNode* record, IContact* contact, const ContactField& field) {
  const auto read =
      field.kind == ContactFieldKind::kMultilineText ? GetChildMultilineText : ReadLine;
  Bstr text;
  const HRESULT status = read(record, field.element, text.put());
  if (status == E_FAIL) {
    text = Bstr(u"");
  } else if (Failed(status)) {
    return status;
  }
  return (contact->*field.putText)(text.get());
}

HRESULT PutYomiText(IXMLDOMNode* record, IContact* contact, const ContactField& field) {
  const HRESULT status = PutText(record, contact, field);
  return status == E_NOTIMPL ? S_OK : status;
}

HRESULT PutEmailList(IXMLDOMNode* record, IContact* contact, const ContactField& field) {
  const Bstr none(u"");
  for (const ContactEmailSlot& slot : ContactEmailSlots()) {
    RETURN_IF_FAILED((contact->*slot.put)(none.get()));
  }
  ComPtr<IXMLDOMNode> list;
  const HRESULT status = FindChildElement(record, field.element, list.put());
  if (status == E_FAIL) return S_OK;
  RETURN_IF_FAILED(status);
  return ParseXMLEmailAddresses(list.get(), contact);
}

HRESULT PutCategoryList(IXMLDOMNode* record, IContact* contact, const ContactField& field) {
  ComPtr<IXMLDOMNode> list;
  Bstr names;
  const HRESULT status = FindChildElement(record, field.element, list.put());
  if (Failed(status) && status != E_FAIL) return status;
  if (list) RETURN_IF_FAILED(ParseXMLCategoriesList(list.get(), names.put()));
  if (!names) names = Bstr(u"");
  return (contact->*field.putText)(names.get());
}

// An unchanged note is not written back: the device may hold it in a form of its own.
HRESULT PutNotes(IXMLDOMNode* record, IContact* contact, const ContactField& field) {
  Bstr text;
  const HRESULT status = GetChildMultilineText(record, field.element, text.put());
  if (Failed(status) && status != E_FAIL) return status;
  Bstr present;
  RETURN_IF_FAILED((contact->*field.getText)(present.put()));
  if (text.view() == present.view()) return S_OK;
  if (!text) text = Bstr(u"");
  return (contact->*field.putText)(text.get());
}

// Any code but "read" and "missing" fails the record, the positive one of a date that does not
// exist included: a birthday that was sent must not get lost behind a success.
HRESULT PutDate(IXMLDOMNode* record, IContact* contact, const ContactField& field, bool* refused) {
  DATE date = kNoDate;
  const HRESULT status = GetChildDate(record, field.element, &date);
  *refused = status != S_OK && status != E_FAIL;
  return *refused ? status : (contact->*field.putDate)(date);
}

HRESULT PutField(IXMLDOMNode* record, IContact* contact, const ContactField& field, bool* refused) {
  switch (field.kind) {
    case ContactFieldKind::kEmailList:
      return PutEmailList(record, contact, field);
    case ContactFieldKind::kCategoryList:
      return PutCategoryList(record, contact, field);
    case ContactFieldKind::kNotes:
      return PutNotes(record, contact, field);
    case ContactFieldKind::kInk:
      return S_OK;
    case ContactFieldKind::kYomiText:
      return PutYomiText(record, contact, field);
    case ContactFieldKind::kDate:
      return PutDate(record, contact, field, refused);
    default:
      return PutText(record, contact, field);
  }
}

HRESULT PutFields(IXMLDOMNode* record, IContact* contact, bool* refused) {
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
    if (Succeeded(status) && !*refused) status = PutField(record, contact, field, refused);
  }
  return status;
}

HRESULT FillAndSave(IXMLDOMNode* record, IUnknown* item, bool* saved) {
  IContact* const contact = static_cast<IContact*>(item);
  bool refused = false;
  HRESULT status = PutFields(record, contact, &refused);
  LOG(u"Before Save");
  if (Failed(status) || refused) return status;
  status = contact->Save();
  *saved = Succeeded(status);
  return status;
}

HRESULT DeleteItem(IUnknown* item) {
  return static_cast<IContact*>(item)->Delete();
}

HRESULT GetOid(IUnknown* item, LONG* oid) {
  return static_cast<IContact*>(item)->get_Oid(oid);
}

constexpr RecordRules kContactRules{
    .folder = olFolderContacts,
    .itemInterface = &IContact::kIid,
    .needsFolder = false,
    .deletesFailedItem = false,
    .fillAndSave = FillAndSave,
    .deleteItem = DeleteItem,
    .getOid = GetOid,
    .enteringTrace = u"Entering ParseXMLContact",
    .addTrace = u"Found something to Add, yeah",
    .exitingTrace = u"Exiting ParseXMLContact, hr = %ld (0x%08X)",
};

}  // namespace

HRESULT ParseXMLContact(IXMLDOMNode* record, IPOutlookApp* app, CorvaneStream* stream, LONG) {
  return ApplyRecord(kContactRules, record, app, stream);
}

}  // namespace corvane
