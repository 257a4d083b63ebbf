// Getters and setters that all items have: COM methods in full, with their fault point `call`.
#pragma once

#include <vector>

#include "handheld/base/guarded.h"
#include "handheld/store/item_texts.h"
#include "handheld/store/ole_date.h"
#include "platform/automation.h"
#include "platform/pocket_outlook_calendar.h"

namespace ce::host {

// What a failing getter leaves in its out-parameter is `none`.
template <typename T>
HRESULT GetValue(const char* call, T current, T* value, T none = {}) {
  if (!value) return E_POINTER;
  *value = none;
  return Guarded(call, [&] {
    *value = current;
    return S_OK;
  });
}

inline HRESULT GetBool(const char* call, bool current, VARIANT_BOOL* value) {
  return GetValue<VARIANT_BOOL>(call, current ? VARIANT_TRUE : VARIANT_FALSE, value);
}

// Runs `set`, which answers whether the property takes the value; sets `changed` when it does.
template <typename Set>
HRESULT PutValue(const char* call, bool& changed, Set&& set) {
  return Guarded(call, [&] {
    if (!set()) return E_INVALIDARG;
    changed = true;
    return S_OK;
  });
}

// The text of a row, owned by the caller; null when memory runs out.
BSTR BstrOf(std::string_view stored);
HRESULT GetStoredText(const char* call, std::string_view stored, BSTR* value);

template <typename Texts>
HRESULT PutStoredText(const char* call, bool& changed, std::size_t longest, Texts& texts,
                      std::size_t index, BSTR value) {
  return Guarded(call, [&] {
    const std::size_t length = SysStringLen(value);
    if (length > longest) return kTextTooLong;
    texts.Set(index, value ? std::u16string_view{value, length} : std::u16string_view{});
    changed = true;
    return S_OK;
  });
}

HRESULT GetInk(const char* call, const std::vector<BYTE>& ink, DWORD* bytes, const BYTE** block);
HRESULT PutInk(const char* call, bool& changed, std::vector<BYTE>& ink, DWORD bytes,
               const BYTE* block);

}  // namespace ce::host
