// COM: identity, reference counting, streams, and the entry points that make objects.
//
// Out-parameters are written on every path: a null interface pointer on failure. Reference counts
// are interlocked; the objects themselves belong to one thread.
#pragma once

#include "platform/types.h"

namespace ce {

struct IUnknown {
  static constexpr GUID kIid{0x00000000, 0, 0, {0xC0, 0, 0, 0, 0, 0, 0, 0x46}};
  virtual HRESULT QueryInterface(const GUID& iid, void** out) = 0;
  virtual DWORD AddRef() = 0;
  virtual DWORD Release() = 0;

 protected:
  ~IUnknown() = default;
};

// Base of the dual interfaces. The object models here answer E_NOTIMPL to all four.
struct IDispatch : IUnknown {
  static constexpr GUID kIid{0x00020400, 0, 0, {0xC0, 0, 0, 0, 0, 0, 0, 0x46}};
  virtual HRESULT GetTypeInfoCount(UINT* count) = 0;
  virtual HRESULT GetTypeInfo(UINT index, DWORD locale, IUnknown** info) = 0;
  virtual HRESULT GetIDsOfNames(const GUID& iid, WCHAR** names, UINT count, DWORD locale,
                                LONG* ids) = 0;
  virtual HRESULT Invoke(LONG id, const GUID& iid, DWORD locale, WORD flags, void* parameters,
                         void* result, void* exception, UINT* argumentError) = 0;

 protected:
  ~IDispatch() = default;
};

struct ISequentialStream : IUnknown {
  virtual HRESULT Read(void* buffer, DWORD bytes, DWORD* read) = 0;
  virtual HRESULT Write(const void* buffer, DWORD bytes, DWORD* written) = 0;

 protected:
  ~ISequentialStream() = default;
};

struct IStream : ISequentialStream {
  static constexpr GUID kIid{0x0000000C, 0, 0, {0xC0, 0, 0, 0, 0, 0, 0, 0x46}};
  virtual HRESULT Seek(LONGLONG move, DWORD origin, ULONGLONG* position) = 0;
  virtual HRESULT SetSize(ULONGLONG size) = 0;
  virtual HRESULT CopyTo(IStream* target, ULONGLONG bytes, ULONGLONG* read, ULONGLONG* written) = 0;
  virtual HRESULT Commit(DWORD flags) = 0;
  virtual HRESULT Revert() = 0;
  virtual HRESULT LockRegion(ULONGLONG offset, ULONGLONG bytes, DWORD type) = 0;
  virtual HRESULT UnlockRegion(ULONGLONG offset, ULONGLONG bytes, DWORD type) = 0;
  virtual HRESULT Stat(void* statistics, DWORD flags) = 0;
  virtual HRESULT Clone(IStream** copy) = 0;

 protected:
  ~IStream() = default;
};

inline constexpr DWORD CLSCTX_INPROC_SERVER = 1;

HRESULT CoInitializeEx(void* reserved, DWORD flags);
void CoUninitialize();
// Knows CLSID_DOMDocument (xml_dom.h) and CLSID_Application (pocket_outlook.h); any other class is
// REGDB_E_CLASSNOTREG.
HRESULT CoCreateInstance(const GUID& classId, IUnknown* outer, DWORD context, const GUID& iid,
                         void** out);

}  // namespace ce
