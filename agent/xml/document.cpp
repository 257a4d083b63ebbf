#include "agent/xml/document.h"

#include "agent/core/corvane_stream.h"
#include "agent/core/memory_stream.h"
#include "agent/log/log.h"
#include "agent/xml/values.h"
#include "platform/com_ptr.h"
#include "platform/status.h"

namespace corvane {

using namespace ce;

namespace {

// A document without its declaration is still sent, so what fails here is not reported.
void AppendDeclaration(IXMLDOMDocument* document, const Bstr& target, const Bstr& data) {
  ComPtr<IXMLDOMProcessingInstruction> declaration;
  if (Succeeded(
          document->createProcessingInstruction(target.get(), data.get(), declaration.put()))) {
    static_cast<void>(document->appendChild(declaration.get(), nullptr));
  }
}

HRESULT PutAttribute(IXMLDOMDocument* document, IXMLDOMElement* element, const WCHAR* name,
                     const Bstr& value) {
  if (!document || !element) return E_POINTER;
  const Bstr attributeName(name);
  if (!attributeName) return E_OUTOFMEMORY;
  ComPtr<IXMLDOMAttribute> attribute;
  RETURN_IF_FAILED(document->createAttribute(attributeName.get(), attribute.put()));
  {
    Variant copy;
    VARIANT* raw = copy.put();
    raw->bstrVal = SysAllocString(value.get());
    raw->vt = VT_BSTR;
    if (!raw->bstrVal) {
      raw->vt = VT_ERROR;
      raw->scode = E_OUTOFMEMORY;
    }
    RETURN_IF_FAILED(attribute->put_value(copy.get()));
  }
  ComPtr<IXMLDOMNamedNodeMap> attributes;
  RETURN_IF_FAILED(element->get_attributes(attributes.put()));
  if (!attributes) return E_FAIL;
  ComPtr<IXMLDOMNode> previous;
  return attributes->setNamedItem(attribute.get(), previous.put());
}

}  // namespace

HRESULT CreateXMLObjects(IXMLDOMDocument** document, IXMLDOMElement** root) {
  *document = nullptr;
  *root = nullptr;
  const Bstr target(u"XML");
  const Bstr data(u"version=\"1.0\" encoding=\"UTF-8\"");
  if (!target || !data) return LastErrorStatus();

  ComPtr<IXMLDOMDocument> made;
  RETURN_IF_FAILED(CoCreateInstance(CLSID_DOMDocument, nullptr, CLSCTX_INPROC_SERVER,
                                    IXMLDOMDocument::kIid, made.put_void()));
  AppendDeclaration(made.get(), target, data);
  ComPtr<IXMLDOMElement> madeRoot;
  RETURN_IF_FAILED(CreateXMLElement(made.get(), u"root", madeRoot.put()));
  RETURN_IF_FAILED(made->appendChild(madeRoot.get(), nullptr));
  *document = made.detach();
  *root = madeRoot.detach();
  return S_OK;
}

HRESULT CreateXMLElement(IXMLDOMDocument* document, const WCHAR* name, IXMLDOMElement** element) {
  *element = nullptr;
  if (!document) return E_POINTER;
  const Bstr elementName(name);
  if (!elementName) return E_OUTOFMEMORY;
  return document->createElement(elementName.get(), element);
}

HRESULT AddEmptyElement(IXMLDOMDocument* document, IXMLDOMNode* parent, const WCHAR* name) {
  if (!parent) return E_POINTER;
  ComPtr<IXMLDOMElement> element;
  RETURN_IF_FAILED(CreateXMLElement(document, name, element.put()));
  return parent->appendChild(element.get(), nullptr);
}

HRESULT SetElementAttribute(IXMLDOMDocument* document, IXMLDOMElement* element, const WCHAR* name,
                            BSTR* value) {
  Bstr owned;
  owned.attach(*value);
  *value = nullptr;
  return owned.empty() ? S_OK : PutAttribute(document, element, name, owned);
}

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

HRESULT SetOid(IXMLDOMDocument* document, IXMLDOMElement* element, LONG oid) {
  Bstr text(LongText(oid).data());
  if (!text) return E_OUTOFMEMORY;
  return SetElementAttribute(document, element, u"Oid", text.address());
}

HRESULT SaveDocument(IXMLDOMDocument* document, MemoryStream* text) {
  VARIANT target;
  target.vt = VT_UNKNOWN;
  target.punkVal = text;
  return document->save(target);
}

HRESULT StreamXMLToDesktop(IXMLDOMDocument* document, CorvaneStream* stream) {
  MemoryStream text;
  if (!document || !stream) return S_OK;
  HRESULT status = SaveDocument(document, &text);
  if (Failed(status) || !text.Buffer() || text.Size() == 0) return status;

  // The data follow also after a length that could not be sent: such a failure is a positive code.
  status = WriteWordAhead(stream, text.Size());
  if (Failed(status)) {
    LOG(u"StreamXMLToDesktop1 0x%08X", status);
    return status;
  }
  status = WriteBlock(stream, text.Buffer(), text.Size());
  if (Failed(status)) LOG(u"StreamXMLToDesktop2 0x%08X", status);
  return status;
}

}  // namespace corvane
