#include "agent/pim_export/contact_to_xml.h"

#include "agent/log/log.h"
#include "agent/pim_export/categories_to_xml.h"
#include "agent/pim_export/ink_to_xml.h"
#include "agent/vocabulary/contact_fields.h"
#include "agent/xml/document.h"
#include "agent/xml/values.h"
#include "platform/com_ptr.h"
#include "platform/status.h"
#include "platform/system.h"

namespace corvane {

using namespace ce;

namespace {

struct ContactRecord {
  IXMLDOMDocument* document;
  IXMLDOMElement* element;
  IContact* contact;
};

HRESULT AddEmail(const ContactRecord& record, IXMLDOMElement* list, const WCHAR* type,
                 Bstr address) {
  ComPtr<IXMLDOMElement> entry;
  RETURN_IF_FAILED(CreateXMLElement(record.document, kEmailElement, entry.put()));
  RETURN_IF_FAILED(list->appendChild(entry.get(), nullptr));
  RETURN_IF_FAILED(
      AddBSTRElement(record.document, entry.get(), kEmailNameElement, address.address()));
  return AddStringElement(record.document, entry.get(), kEmailTypeElement, type);
}

HRESULT AddEmailList(const ContactRecord& record, const ContactField& field) {
  ComPtr<IXMLDOMElement> list;
  RETURN_IF_FAILED(CreateXMLElement(record.document, field.element, list.put()));
  bool any = false;
  for (const ContactEmailSlot& slot : ContactEmailSlots()) {
    Bstr address;
    RETURN_IF_FAILED((record.contact->*slot.get)(address.put()));
    if (address.empty()) continue;
    RETURN_IF_FAILED(AddEmail(record, list.get(), slot.type, std::move(address)));
    any = true;
  }
  return any ? record.element->appendChild(list.get(), nullptr) : S_OK;
}

// The adders below take the status so far and hand it back when it is a failure: the traces of the
// last fields are written whatever came before.

HRESULT AddText(const ContactRecord& record, const ContactField& field, HRESULT status) {
  Bstr text;
  if (Succeeded(status)) {
    status = (record.contact->*field.getText)(text.put());
    if (status == E_NOTIMPL && field.kind == ContactFieldKind::kYomiText) status = S_OK;
    if (Succeeded(status) && field.valueTrace) LOG(field.valueTrace, text.get());
  }
  if (field.statusTrace) LOG(field.statusTrace, status);
  RETURN_IF_FAILED(status);
  const auto add =
      field.kind == ContactFieldKind::kCategoryList ? AddCategoriesToXML : AddBSTRElement;
  return add(record.document, record.element, field.element, text.address());
}

HRESULT AddInk(const ContactRecord& record, const ContactField& field, HRESULT status) {
  if (Succeeded(status)) {
    DWORD bytes = 0;
    const BYTE* block = nullptr;
    const HRESULT read = record.contact->get_BodyInk(&bytes, &block);
    status = AddInkToXML(record.document, record.element, field.element, read, bytes, block);
  }
  if (field.statusTrace) LOG(field.statusTrace, status);
  return status;
}

HRESULT AddDate(const ContactRecord& record, const ContactField& field, HRESULT status) {
  DATE date = kNoDate;
  if (Succeeded(status)) status = (record.contact->*field.getDate)(&date);
  if (field.statusTrace) LOG(field.statusTrace, status);
  RETURN_IF_FAILED(status);
  return AddDateElement(record.document, record.element, field.element, date);
}

HRESULT AddField(const ContactRecord& record, const ContactField& field, HRESULT status) {
  switch (field.kind) {
    case ContactFieldKind::kEmailList:
      return Failed(status) ? status : AddEmailList(record, field);
    case ContactFieldKind::kInk:
      return AddInk(record, field, status);
    case ContactFieldKind::kDate:
      return AddDate(record, field, status);
    default:
      return AddText(record, field, status);
  }
}

HRESULT AddFields(const ContactRecord& record, HRESULT status) {
  bool yomiAsked = false;
  bool yomi = false;
  for (const ContactField& field : ContactFields()) {
    if (field.kind == ContactFieldKind::kYomiText) {
      if (!yomiAsked) {
        yomiAsked = true;
        yomi = GetSystemDefaultLangID() == kLangJapanese;
        if (yomi) LOG(u"Getting Yomi Fields");
      }
      if (!yomi) continue;
    }
    status = AddField(record, field, status);
  }
  return status;
}

HRESULT CreateRecord(IXMLDOMDocument* document, IXMLDOMNode* parent, LONG oid, LONG variant,
                     IXMLDOMElement** element) {
  *element = nullptr;
  if (variant != 1 && variant != 2) return E_INVALIDARG;
  ComPtr<IXMLDOMElement> made;
  RETURN_IF_FAILED(
      CreateXMLElement(document, variant == 1 ? kContactElement : kContact2Element, made.put()));
  RETURN_IF_FAILED(SetOid(document, made.get(), oid));
  RETURN_IF_FAILED(parent->appendChild(made.get(), nullptr));
  *element = made.detach();
  return S_OK;
}

}  // namespace

HRESULT AddContactToXML(IXMLDOMDocument* document, IXMLDOMNode* parent, IContact* contact,
                        LONG variant) {
  LOG(u"AddContactToXML");
  if (!parent || !contact) return E_POINTER;
  LONG oid = 0;
  ComPtr<IXMLDOMElement> element;
  HRESULT status = contact->get_Oid(&oid);
  if (Succeeded(status)) status = CreateRecord(document, parent, oid, variant, element.put());
  return AddFields({document, element.get(), contact}, status);
}

}  // namespace corvane
