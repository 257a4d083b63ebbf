// The base of the virtual handheld's COM objects: reference count, identity, IDispatch.
#pragma once

#include <atomic>

#include "handheld/base/fault.h"
#include "platform/com.h"
#include "platform/status.h"

namespace ce::host {

// COM objects of the handheld that are alive in this process. 0 when everything was released.
LONG LiveComObjects();

// The member of an object that is counted by itself.
class CountedAlive {
 public:
  CountedAlive() { ++g_count; }
  CountedAlive(const CountedAlive&) = delete;
  CountedAlive& operator=(const CountedAlive&) = delete;
  ~CountedAlive() { --g_count; }

 private:
  friend LONG LiveComObjects();

  inline static std::atomic<LONG> g_count{0};
};

// Objects that LiveComObjects counts together, at the cost of no shared counter: for many small
// ones of one owner. They come and go on one thread at a time; those that are left end with it.
class ObjectGroup {
 public:
  ObjectGroup();
  ObjectGroup(const ObjectGroup&) = delete;
  ObjectGroup& operator=(const ObjectGroup&) = delete;
  ~ObjectGroup();

  LONG count() const { return count_.load(std::memory_order_relaxed); }
  void Add(LONG objects) { count_.store(count() + objects, std::memory_order_relaxed); }

 private:
  friend LONG LiveComObjects();

  std::atomic<LONG> count_{0};
  ObjectGroup* next_ = nullptr;
  ObjectGroup* previous_ = nullptr;
};

// Implements IUnknown for the object `Interface`, which also answers to each of `Bases` (the
// interfaces that it derives from). Starts with one reference; deletes itself with the last.
// Override ExtraInterface for interfaces beside the chain. Does not count itself as alive.
template <typename Interface, typename... Bases>
class UncountedObject : public Interface {
 public:
  UncountedObject() = default;
  UncountedObject(const UncountedObject&) = delete;
  UncountedObject& operator=(const UncountedObject&) = delete;

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
  virtual ~UncountedObject() = default;
  // The interface pointer, not yet counted; null when the object does not have it.
  virtual void* ExtraInterface(const GUID&) { return nullptr; }
  DWORD references() const { return references_; }

 private:
  std::atomic<DWORD> references_{1};
};

// The same, counted.
template <typename Interface, typename... Bases>
class UnknownObject : public UncountedObject<Interface, Bases...> {
 protected:
  ~UnknownObject() override = default;

 private:
  CountedAlive counted_;
};

// IDispatch's methods for the object `Base`.
template <typename Base>
class Dispatched : public Base {
 public:
  HRESULT GetTypeInfoCount(UINT*) override { return E_NOTIMPL; }
  HRESULT GetTypeInfo(UINT, DWORD, IUnknown**) override { return E_NOTIMPL; }
  HRESULT GetIDsOfNames(const GUID&, WCHAR**, UINT, DWORD, LONG*) override { return E_NOTIMPL; }
  HRESULT Invoke(LONG, const GUID&, DWORD, WORD, void*, void*, void*, UINT*) override {
    return E_NOTIMPL;
  }

 protected:
  ~Dispatched() override = default;
};

// An UnknownObject whose interface derives from IDispatch.
template <typename Interface, typename... Bases>
class ComObject : public Dispatched<UnknownObject<Interface, Bases..., IDispatch>> {
 protected:
  ~ComObject() override = default;
};

}  // namespace ce::host
