#include "agent/messages/recipients_to_xml.h"

#include <algorithm>

#include "agent/log/log.h"
#include "agent/messages/mapi_memory.h"
#include "agent/xml/document.h"
#include "agent/xml/values.h"
#include "platform/com_ptr.h"
#include "platform/status.h"

namespace corvane {

using namespace ce;

namespace {

HRESULT AddRecipient(IXMLDOMDocument* document, IXMLDOMElement* parent, const WCHAR* address,
                     ComPtr<IXMLDOMElement>* list) {
  if (!*list) {
    RETURN_IF_FAILED(CreateXMLElement(document, u"Recipients", list->put()));
    RETURN_IF_FAILED(parent->appendChild(list->get(), nullptr));
  }
  ComPtr<IXMLDOMElement> recipient;
  RETURN_IF_FAILED(CreateXMLElement(document, u"Recipient", recipient.put()));
  RETURN_IF_FAILED((*list)->appendChild(recipient.get(), nullptr));
  const HRESULT status = AddStringElement(document, recipient.get(), u"Number", address);
  LOG(u"Recipient: %s", address);
  return status;
}

}  // namespace

HRESULT AddRecipientsToXML(IXMLDOMDocument* document, IXMLDOMElement* parent, IMessage* message,
                           DWORD values) {
  ComPtr<IMAPITable> recipients;
  const HRESULT opened = message->GetRecipientTable(0, recipients.put());
  if (opened == MAPI_E_NO_RECIPIENTS) return S_OK;
  RETURN_IF_FAILED(opened);
  LOG(u"GotrecipientTable");
  ComPtr<IXMLDOMElement> list;
  for (;;) {
    SingleRow row;
    RETURN_IF_FAILED(recipients->QueryRows(1, 0, row.put()));
    if (!row.get()) return S_OK;
    const DWORD bound = std::min(values, row.get()->cValues);
    for (DWORD index = 0; index < bound; ++index) {
      const SPropValue& value = row.get()->lpProps[index];
      if (value.ulPropTag != PR_EMAIL_ADDRESS_W) continue;
      RETURN_IF_FAILED(AddRecipient(document, parent, value.Value.lpszW, &list));
    }
  }
}

}  // namespace corvane
