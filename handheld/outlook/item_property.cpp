#include "handheld/outlook/item_property.h"

#include "common/text/unicode.h"

namespace ce::host {

BSTR BstrOf(std::string_view stored) {
  BSTR text = SysAllocStringLen(nullptr, static_cast<UINT>(text::Utf16Length(stored)));
  if (text) text::DecodeWtf8(stored, text);
  return text;
}

HRESULT GetStoredText(const char* call, std::string_view stored, BSTR* value) {
  if (!value) return E_POINTER;
  *value = nullptr;
  return Guarded(call, [&] {
    *value = BstrOf(stored);
    return *value ? S_OK : E_OUTOFMEMORY;
  });
}

HRESULT GetInk(const char* call, const std::vector<BYTE>& ink, DWORD* bytes, const BYTE** block) {
  if (!bytes || !block) return E_POINTER;
  *bytes = 0;
  *block = nullptr;
  return Guarded(call, [&] {
    if (ink.empty()) return E_NOTIMPL;
    *bytes = static_cast<DWORD>(ink.size());
    *block = ink.data();
    return S_OK;
  });
}

HRESULT PutInk(const char* call, bool& changed, std::vector<BYTE>& ink, DWORD bytes,
               const BYTE* block) {
  return Guarded(call, [&] {
    if (bytes > 0 && !block) return E_INVALIDARG;
    ink.assign(block, block + bytes);
    changed = true;
    return S_OK;
  });
}

}  // namespace ce::host
