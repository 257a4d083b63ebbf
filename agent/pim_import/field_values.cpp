#include "agent/pim_import/field_values.h"

#include <cstddef>
#include <string_view>

#include "agent/pim_import/scan.h"
#include "platform/com_ptr.h"
#include "platform/status.h"

namespace corvane {

using namespace ce;

namespace {

bool IsBareLineFeed(WCHAR before, WCHAR character) {
  return character == u'\n' && before != u'\r';
}

std::size_t BareLineFeeds(std::u16string_view text) {
  std::size_t count = 0;
  WCHAR before = 0;
  for (const WCHAR character : text) {
    if (IsBareLineFeed(before, character)) ++count;
    before = character;
  }
  return count;
}

}  // namespace

HRESULT FindChildElement(const ChildElements& parent, const WCHAR* name, IXMLDOMNode** child) {
  return parent.Find(name, child);
}

HRESULT GetNodeText(IXMLDOMNode* node, VARIANT* value) {
  ComPtr<IXMLDOMNode> first;
  RETURN_IF_FAILED(node->get_firstChild(first.put()));
  if (!first) return E_FAIL;
  RETURN_IF_FAILED(first->get_nodeValue(value));
  // An element in the first place has no text of its own.
  if (value->vt == VT_BSTR && SysStringLen(value->bstrVal) > 0) return S_OK;
  VariantClear(value);
  return E_FAIL;
}

HRESULT GetChildValue(const ChildElements& parent, const WCHAR* name, VARIANT* value) {
  ComPtr<IXMLDOMNode> child;
  RETURN_IF_FAILED(FindChildElement(parent, name, child.put()));
  return GetNodeText(child.get(), value);
}

HRESULT GetChildMultilineText(const ChildElements& parent, const WCHAR* name, BSTR* text) {
  Variant value;
  RETURN_IF_FAILED(GetChildValue(parent, name, value.put()));
  const std::u16string_view source = value.text();
  const std::size_t length = source.size() + BareLineFeeds(source);
  const BSTR result = SysAllocStringLen(nullptr, static_cast<UINT>(length));
  if (!result) return E_OUTOFMEMORY;
  WCHAR* out = result;
  WCHAR before = 0;
  for (const WCHAR character : source) {
    if (IsBareLineFeed(before, character)) *out++ = u'\r';
    *out++ = before = character;
  }
  *text = result;
  return S_OK;
}

HRESULT GetChildBool(const ChildElements& parent, const WCHAR* name, LONG* value,
                     LONG defaultValue) {
  Variant text;
  *value = defaultValue;
  if (Failed(GetChildValue(parent, name, text.put()))) return S_OK;
  if (text.text() == u"TRUE") *value = 1;
  if (text.text() == u"FALSE") *value = 0;
  return S_OK;
}

HRESULT GetChildLongDefault(const ChildElements& parent, const WCHAR* name, LONG* value,
                            LONG defaultValue) {
  *value = defaultValue;
  static_cast<void>(GetChildLong(parent, name, value));
  return S_OK;
}

HRESULT GetChildLong(const ChildElements& parent, const WCHAR* name, LONG* value) {
  Variant text;
  RETURN_IF_FAILED(GetChildValue(parent, name, text.put()));
  *value = TextToLong(text.text());
  return S_OK;
}

}  // namespace corvane
