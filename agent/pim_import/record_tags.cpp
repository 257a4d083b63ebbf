#include "agent/pim_import/record_tags.h"

#include "agent/log/log.h"
#include "agent/pim_import/scan.h"
#include "platform/com_ptr.h"
#include "platform/status.h"

namespace corvane {

using namespace ce;

namespace {

HRESULT ReadLong(IXMLDOMNode* attribute, LONG* number) {
  Variant value;
  const HRESULT status = attribute->get_nodeValue(value.put());
  if (Succeeded(status)) *number = TextToLong(value.text());
  return status;
}

}  // namespace

HRESULT ReadRecordTags(IXMLDOMNode* record, LONG* oid, LONG* deleteFlag) {
  *oid = 0;
  *deleteFlag = 0;
  ComPtr<IXMLDOMNamedNodeMap> attributes;
  RETURN_IF_FAILED(record->get_attributes(attributes.put()));
  if (!attributes) return S_OK;

  // Not to be taken for a look-up that finds nothing: the record would be added a second time.
  const Bstr oidName(u"Oid");
  const Bstr deleteName(u"Delete");
  if (!oidName || !deleteName) return E_OUTOFMEMORY;

  ComPtr<IXMLDOMNode> tag;
  HRESULT status = attributes->getNamedItem(oidName.get(), tag.put());
  LOG(u"getNamedItem returned %ld", status);
  const bool hasOid = Succeeded(status) && tag;
  if (hasOid) {
    status = ReadLong(tag.get(), oid);
    LOG(u"get_nodeValue returned %ld", status);
    RETURN_IF_FAILED(status);
  }

  // Looked at without an "Oid" too, so that a deletion of nothing adds nothing.
  if (Failed(attributes->getNamedItem(deleteName.get(), tag.put())) || !tag) {
    if (hasOid) LOG(u"Didn't find delete tag");
    return S_OK;
  }
  if (Succeeded(ReadLong(tag.get(), deleteFlag))) {
    LOG(u"bDelete = %ld", *deleteFlag);
  }
  return S_OK;
}

}  // namespace corvane
