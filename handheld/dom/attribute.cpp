#include "handheld/dom/attribute.h"

#include "handheld/base/guarded.h"

namespace ce::host::dom {

HRESULT Attribute::put_value(VARIANT value) {
  return Guarded("IXMLDOMAttribute::put_value", [&] {
    if (value.vt != VT_BSTR) return E_INVALIDARG;
    value_ = methods::View(value.bstrVal);
    return S_OK;
  });
}

}  // namespace ce::host::dom
