#include "agent/pim_import/upload_document.h"

#include <cstring>

#include "agent/log/log.h"
#include "agent/xml/document.h"
#include "platform/status.h"

namespace corvane {

using namespace ce;

namespace {

// Into a variant that owns the array.
HRESULT CopyToArray(const BYTE* bytes, DWORD count, VARIANT* variant) {
  variant->parray = SafeArrayCreateVector(VT_UI1, 0, count);
  if (!variant->parray) return E_OUTOFMEMORY;
  variant->vt = VT_ARRAY | VT_UI1;
  void* data = nullptr;
  RETURN_IF_FAILED(SafeArrayAccessData(variant->parray, &data));
  std::memcpy(data, bytes, count);
  return SafeArrayUnaccessData(variant->parray);
}

}  // namespace

HRESULT UploadDocument::Create() {
  RETURN_IF_FAILED(CoCreateInstance(CLSID_DOMDocument, nullptr, CLSCTX_INPROC_SERVER,
                                    IXMLDOMDocument::kIid, document_.put_void()));
  return ConfineDocument(document_.get());
}

HRESULT UploadDocument::Load(const BYTE* bytes, DWORD count) {
  Variant source;
  RETURN_IF_FAILED(CopyToArray(bytes, count, source.put()));
  VARIANT_BOOL successful = VARIANT_FALSE;
  const HRESULT status = document_->load(source.get(), &successful);
  LOG(u"pDoc->load returned %ld", status);
  return status;
}

HRESULT UploadDocument::FirstRecord(ComPtr<IXMLDOMNode>* record) {
  record->reset();
  ComPtr<IXMLDOMElement> root;
  HRESULT status = document_->get_documentElement(root.put());
  LOG(u"pDoc->get_documentElement returned %ld", status);
  if (Failed(status)) return status;
  if (!root) {
    LOG(u"Didn't get pRoot");
    return status;
  }
  status = root->get_firstChild(record->put());
  LOG(u"get_firstChild returned %ld", status);
  return status;
}

}  // namespace corvane
