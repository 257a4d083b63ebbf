#include "agent/pim_import/upload_document.h"

#include "agent/log/log.h"
#include "agent/xml/document.h"
#include "platform/status.h"

namespace corvane {

using namespace ce;

HRESULT UploadDocument::Create() {
  RETURN_IF_FAILED(CoCreateInstance(CLSID_DOMDocument, nullptr, CLSCTX_INPROC_SERVER,
                                    IXMLDOMDocument::kIid, document_.put_void()));
  return ConfineDocument(document_.get());
}

HRESULT UploadDocument::Load(const VARIANT& bytes) {
  VARIANT_BOOL successful = VARIANT_FALSE;
  const HRESULT status = document_->load(bytes, &successful);
  LOG(u"pDoc->load returned %ld", status);
  return status;
}

void UploadDocument::Clear() {
  VARIANT_BOOL successful = VARIANT_FALSE;
  static_cast<void>(document_->load(VARIANT{}, &successful));
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
