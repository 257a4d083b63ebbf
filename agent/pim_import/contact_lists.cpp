#include "agent/pim_import/contact_lists.h"

#include <string_view>

#include "agent/log/log.h"
#include "agent/pim_import/field_values.h"
#include "agent/vocabulary/contact_fields.h"
#include "platform/status.h"

namespace corvane {

using namespace ce;

namespace {

HRESULT StoreAddress(IContact* contact, std::u16string_view type, const Bstr& address) {
  for (const ContactEmailSlot& slot : ContactEmailSlots()) {
    if (type == slot.type) return (contact->*slot.put)(address.get());
  }
  return S_OK;
}

// A node without text changes nothing.
HRESULT TakeText(IXMLDOMNode* node, Bstr* text) {
  VARIANT value;
  const HRESULT status = GetNodeText(node, &value);
  if (status == E_FAIL) return S_OK;
  RETURN_IF_FAILED(status);
  text->attach(value.bstrVal);
  return S_OK;
}

HRESULT ParseEmailAddress(IXMLDOMNode* entry, IContact* contact) {
  Bstr address;
  Bstr type;
  RETURN_IF_FAILED(ForEachChild(entry, [&](IXMLDOMNode* child, const Bstr& name) {
    if (name.view() == kEmailNameElement) return TakeText(child, &address);
    if (name.view() == kEmailTypeElement) return TakeText(child, &type);
    return S_OK;
  }));
  return address && type ? StoreAddress(contact, type.view(), address) : S_OK;
}

}  // namespace

HRESULT ParseXMLEmailAddresses(IXMLDOMNode* container, IContact* contact) {
  LOG(u"ParseXMLEmailAddresses called");
  const HRESULT status = ForEachChild(container, [&](IXMLDOMNode* child, const Bstr& name) {
    HRESULT parsed = S_OK;
    if (name.view() == kEmailElement) {
      LOG(u"Found an email address container");
      parsed = ParseEmailAddress(child, contact);
    }
    LOG(u"bstrCntrName = %s", name);
    return parsed;
  });
  LOG(u"returning %ld", status);
  return status;
}

}  // namespace corvane
