#include "agent/xml/document_safety.h"

#include "platform/com_ptr.h"
#include "platform/status.h"

namespace corvane {

using namespace ce;

HRESULT ConfineDocument(IXMLDOMDocument* document) {
  if (!document) return E_POINTER;
  ComPtr<IObjectSafety> safety;
  RETURN_IF_FAILED(document->QueryInterface(IObjectSafety::kIid, safety.put_void()));
  DWORD supported = 0;
  DWORD enabled = 0;
  RETURN_IF_FAILED(safety->GetInterfaceSafetyOptions(IXMLDOMDocument::kIid, &supported, &enabled));
  RETURN_IF_FAILED(safety->SetInterfaceSafetyOptions(IXMLDOMDocument::kIid, supported, 0));
  RETURN_IF_FAILED(document->put_validateOnParse(VARIANT_FALSE));
  RETURN_IF_FAILED(document->put_resolveExternals(VARIANT_FALSE));
  return document->put_preserveWhiteSpace(VARIANT_FALSE);
}

}  // namespace corvane
