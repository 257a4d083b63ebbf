// The base of the virtual handheld's COM objects: reference count, identity, IDispatch.
#pragma once

#include <atomic>

#include "handheld/base/fault.h"
#include "platform/com.h"
#include "platform/status.h"

namespace ce::host {

namespace detail {
inline std::atomic<LONG> g_liveObjects{0};
}

// COM objects of the handheld that are alive in this process. 0 when everything was released.
inline LONG LiveComObjects() {
  return detail::g_liveObjects;
}

// Implements IUnknown for the object `Interface`, which also answers to each of `Bases` (the
// interfaces that it derives from). Starts with one reference; deletes itself with the last.
// Override ExtraInterface for interfaces beside the chain.
template <typename Interface, typename... Bases>
class UnknownObject : public Interface {
 public:
  UnknownObject() { ++detail::g_liveObjects; }
  UnknownObject(const UnknownObject&) = delete;
  UnknownObject& operator=(const UnknownObject&) = delete;

  HRESULT QueryInterface(const GUID& iid, void** out) override {
    if (!out) return E_POINTER;
    *out = nullptr;
    RETURN_IF_FAILED(FaultStatus("QueryInterface"));
    if (iid == IUnknown::kIid || iid == Interface::kIid || (... || (iid == Bases::kIid))) {
      *out = static_cast<Interface*>(this);
    } else {
      *out = ExtraInterface(iid);
    }
    if (!*out) return E_NOINTERFACE;
    AddRef();
    return S_OK;
  }
  DWORD AddRef() override { return ++references_; }
  DWORD Release() override {
    const DWORD left = --references_;
    if (left == 0) delete this;
    return left;
  }

 protected:
  virtual ~UnknownObject() { --detail::g_liveObjects; }
  // The interface pointer, not yet counted; null when the object does not have it.
  virtual void* ExtraInterface(const GUID&) { return nullptr; }
  DWORD references() const { return references_; }

 private:
  std::atomic<DWORD> references_{1};
};

// The same for an interface that derives from IDispatch.
template <typename Interface, typename... Bases>
class ComObject : public UnknownObject<Interface, Bases..., IDispatch> {
 public:
  HRESULT GetTypeInfoCount(UINT*) override { return E_NOTIMPL; }
  HRESULT GetTypeInfo(UINT, DWORD, IUnknown**) override { return E_NOTIMPL; }
  HRESULT GetIDsOfNames(const GUID&, WCHAR**, UINT, DWORD, LONG*) override { return E_NOTIMPL; }
  HRESULT Invoke(LONG, const GUID&, DWORD, WORD, void*, void*, void*, UINT*) override {
    return E_NOTIMPL;
  }

 protected:
  ~ComObject() override = default;
};

}  // namespace ce::host
