#include <cstdlib>
#include <exception>
#include <new>
#include <optional>
#include <utility>

#include "handheld/base/fault.h"
#include "handheld/base/upload_memory.h"
#include "platform/automation.h"
#include "platform/status.h"

namespace ce {

struct SAFEARRAY {
  DWORD elements;
  host::UploadMemory::Share share;

  BYTE* data() { return reinterpret_cast<BYTE*>(this + 1); }
};

namespace {

// Documents travel in arrays. A small one waits for nobody.
constexpr DWORD kSmallArray = 64 * 1024;

std::optional<host::UploadMemory::Share> ShareFor(DWORD bytes) {
  using host::UploadMemory;
  if (bytes <= kSmallArray) return UploadMemory::Share();
  try {
    return host::SharedUploadMemory().Take(UploadMemory::Use::kReceived, bytes);
  } catch (const std::exception&) {
    return std::nullopt;
  }
}

}  // namespace

void VariantInit(VARIANT* variant) {
  if (variant) *variant = VARIANT{};
}

HRESULT VariantClear(VARIANT* variant) {
  if (!variant) return E_INVALIDARG;
  const VARIANT old = std::exchange(*variant, VARIANT{});
  switch (old.vt) {
    case VT_BSTR:
      SysFreeString(old.bstrVal);
      break;
    case VT_UNKNOWN:
      if (old.punkVal) old.punkVal->Release();
      break;
    case VT_ARRAY | VT_UI1:
      if (old.parray) SafeArrayDestroy(old.parray);
      break;
    default:
      break;
  }
  return S_OK;
}

SAFEARRAY* SafeArrayCreateVector(VARTYPE type, LONG lowerBound, DWORD elements) {
  if (const DWORD error = host::FaultFor("SafeArrayCreateVector")) {
    SetLastError(error);
    return nullptr;
  }
  if (type != VT_UI1 || lowerBound != 0) {
    SetLastError(ERROR_INVALID_PARAMETER);
    return nullptr;
  }
  std::optional<host::UploadMemory::Share> share = ShareFor(elements);
  // What nobody has written into costs nothing.
  void* const memory = share ? std::calloc(1, sizeof(SAFEARRAY) + elements) : nullptr;
  if (!memory) {
    SetLastError(ERROR_NOT_ENOUGH_MEMORY);
    return nullptr;
  }
  return new (memory) SAFEARRAY{elements, std::move(*share)};
}

HRESULT SafeArrayAccessData(SAFEARRAY* array, void** data) {
  if (!data) return E_POINTER;
  *data = nullptr;
  RETURN_IF_FAILED(host::FaultStatus("SafeArrayAccessData"));
  if (!array) return E_INVALIDARG;
  *data = array->data();
  return S_OK;
}

HRESULT SafeArrayUnaccessData(SAFEARRAY* array) {
  RETURN_IF_FAILED(host::FaultStatus("SafeArrayUnaccessData"));
  return array ? S_OK : E_INVALIDARG;
}

HRESULT SafeArrayDestroy(SAFEARRAY* array) {
  if (array) array->~SAFEARRAY();
  std::free(array);
  return S_OK;
}

DWORD SafeArrayGetCount(const SAFEARRAY* array) {
  return array ? array->elements : 0;
}

}  // namespace ce
