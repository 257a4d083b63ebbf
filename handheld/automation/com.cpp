#include "platform/com.h"

#include "handheld/automation/com_classes.h"
#include "handheld/base/fault.h"
#include "platform/pocket_outlook.h"
#include "platform/status.h"
#include "platform/xml_dom.h"

namespace ce {

HRESULT CoInitializeEx(void*, DWORD) {
  return host::FaultStatus("CoInitializeEx");
}

void CoUninitialize() {}

HRESULT CoCreateInstance(const GUID& classId, IUnknown*, DWORD, const GUID& iid, void** out) {
  if (!out) return E_POINTER;
  *out = nullptr;
  RETURN_IF_FAILED(host::FaultStatus("CoCreateInstance"));
  if (classId == CLSID_DOMDocument) return host::CreateDomDocument(iid, out);
  if (classId == CLSID_Application) return host::CreateOutlookApp(iid, out);
  return REGDB_E_CLASSNOTREG;
}

}  // namespace ce
