#include "agent/pim_export/ink_to_xml.h"

#include <cstring>
#include <string_view>

#include "agent/xml/values.h"

namespace corvane {

using namespace ce;

namespace {

constexpr std::string_view kInkSignature = "{\\pwi";

}  // namespace

bool IsInkNote(DWORD bytes, const BYTE* block) {
  return block && bytes > kInkSignature.size() &&
         std::memcmp(block, kInkSignature.data(), kInkSignature.size()) == 0;
}

HRESULT AddInkToXML(IXMLDOMDocument* document, IXMLDOMNode* parent, const WCHAR* name, HRESULT read,
                    DWORD bytes, const BYTE* block) {
  if (read == E_NOTIMPL || read == E_FAIL) return S_OK;
  if (Failed(read) || !IsInkNote(bytes, block)) return read;
  return AddBoolElement(document, parent, name, TRUE);
}

}  // namespace corvane
