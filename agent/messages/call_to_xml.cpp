#include "agent/messages/call_to_xml.h"

#include "agent/device/ink_convert.h"
#include "agent/xml/document.h"
#include "agent/xml/values.h"
#include "platform/com_ptr.h"
#include "platform/status.h"
#include "platform/windows.h"

namespace corvane {

using namespace ce;

namespace {

struct FlagRow {
  const WCHAR* name;
  DWORD bit;
};

// Roaming stands before the end, out of the bits' order: the desktop knows it so.
constexpr FlagRow kFlags[] = {
    {u"Outgoing", CALLLOG_OUTGOING},
    {u"Connected", CALLLOG_CONNECTED},
    {u"Roam", CALLLOG_ROAM},
    {u"Ended", CALLLOG_ENDED},
};

HRESULT AddNote(IXMLDOMDocument* document, IXMLDOMNode* call, const WCHAR* path) {
  if (!path || path[0] == 0) return S_OK;
  DWORD count = 0;
  BYTE* converted = nullptr;
  const HRESULT status = ConvertFileToBuffer(path, SF_TEXT_UNICODE, &count, &converted);
  const LocalPtr<WCHAR> text(converted);
  RETURN_IF_FAILED(status);
  // The conversion leaves room behind what it wrote, and no terminator.
  if (text) text.get()[count / sizeof(WCHAR)] = 0;
  return AddStringElement(document, call, u"Note", text.get());
}

HRESULT AddFlags(IXMLDOMDocument* document, IXMLDOMNode* call, DWORD flags) {
  for (const FlagRow& row : kFlags) {
    const LONG allBitsOrNone = (flags & row.bit) != 0 ? -1 : 0;
    RETURN_IF_FAILED(AddBoolElement(document, call, row.name, allBitsOrNone));
  }
  return S_OK;
}

}  // namespace

HRESULT AddCallToXML(IXMLDOMDocument* document, IXMLDOMNode* root, const CALLLOGENTRY& entry) {
  ComPtr<IXMLDOMElement> call;
  RETURN_IF_FAILED(CreateXMLElement(document, u"Call", call.put()));
  RETURN_IF_FAILED(root->appendChild(call.get(), nullptr));
  RETURN_IF_FAILED(AddStringElement(document, call.get(), u"Number", entry.pszNumber));
  RETURN_IF_FAILED(AddStringElement(document, call.get(), u"Name", entry.pszName));
  RETURN_IF_FAILED(AddStringElement(document, call.get(), u"Type", entry.pszNameType));
  RETURN_IF_FAILED(AddNote(document, call.get(), entry.pszNote));
  RETURN_IF_FAILED(AddFlags(document, call.get(), entry.dwFlags));
  RETURN_IF_FAILED(AddLongElement(document, call.get(), u"CID", static_cast<LONG>(entry.cidt)));
  RETURN_IF_FAILED(AddFileTimeElement(document, call.get(), u"Start", entry.ftStartTime));
  return AddFileTimeElement(document, call.get(), u"End", entry.ftEndTime);
}

}  // namespace corvane
