#include "agent/pim_export/error_to_xml.h"

#include "agent/log/log.h"
#include "agent/xml/document.h"
#include "agent/xml/values.h"
#include "platform/com_ptr.h"
#include "platform/status.h"

namespace corvane {

using namespace ce;

namespace {

HRESULT AddError(IXMLDOMDocument* document, IXMLDOMNode* parent, LONG oid, HRESULT status) {
  if (!parent) return E_POINTER;
  ComPtr<IXMLDOMElement> error;
  RETURN_IF_FAILED(CreateXMLElement(document, u"Error", error.put()));
  RETURN_IF_FAILED(parent->appendChild(error.get(), nullptr));
  RETURN_IF_FAILED(SetOid(document, error.get(), oid));
  return AddLongElement(document, error.get(), u"Value", status);
}

}  // namespace

HRESULT AddErrorToXML(IXMLDOMDocument* document, IXMLDOMNode* parent, LONG oid, HRESULT status) {
  LOG(u"AddErrorToXML");
  const HRESULT added = AddError(document, parent, oid, status);
  LOG(u"Exit AddErrorToXML");
  return added;
}

}  // namespace corvane
