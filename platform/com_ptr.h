// Owners for COM references, automation strings, variants and local memory.
//
// put() releases what is held and hands out the address for an out-parameter; attach() takes over a
// reference, detach() gives it up. Nothing converts implicitly.
#pragma once

#include <string_view>
#include <utility>

#include "platform/automation.h"
#include "platform/com.h"
#include "platform/memory.h"

namespace ce {

template <typename T>
class ComPtr {
 public:
  ComPtr() = default;
  ComPtr(std::nullptr_t) {}
  explicit ComPtr(T* object) : object_(object) {
    if (object_) object_->AddRef();
  }
  ComPtr(const ComPtr& other) : ComPtr(other.object_) {}
  ComPtr(ComPtr&& other) noexcept : object_(std::exchange(other.object_, nullptr)) {}
  ComPtr& operator=(ComPtr other) noexcept {
    std::swap(object_, other.object_);
    return *this;
  }
  ~ComPtr() { reset(); }

  T* get() const { return object_; }
  T* operator->() const { return object_; }
  explicit operator bool() const { return object_ != nullptr; }

  void reset() {
    if (T* old = std::exchange(object_, nullptr)) old->Release();
  }
  T** put() {
    reset();
    return &object_;
  }
  void** put_void() { return reinterpret_cast<void**>(put()); }
  void attach(T* object) {
    reset();
    object_ = object;
  }
  [[nodiscard]] T* detach() { return std::exchange(object_, nullptr); }

  // Null when the object lacks the interface.
  template <typename U>
  ComPtr<U> query() const {
    ComPtr<U> result;
    if (object_ && Failed(object_->QueryInterface(U::kIid, result.put_void()))) result.reset();
    return result;
  }

 private:
  T* object_ = nullptr;
};

class Bstr {
 public:
  Bstr() = default;
  // Null when the text is null or memory runs out.
  explicit Bstr(const WCHAR* text) : text_(SysAllocString(text)) {}
  explicit Bstr(std::u16string_view text)
      : text_(SysAllocStringLen(text.data(), static_cast<UINT>(text.size()))) {}
  Bstr(Bstr&& other) noexcept : text_(std::exchange(other.text_, nullptr)) {}
  Bstr& operator=(Bstr&& other) noexcept {
    if (this != &other) attach(other.detach());
    return *this;
  }
  ~Bstr() { SysFreeString(text_); }

  BSTR get() const { return text_; }
  explicit operator bool() const { return text_ != nullptr; }
  bool empty() const { return !text_ || !*text_; }
  std::u16string_view view() const { return {text_ ? text_ : u"", SysStringLen(text_)}; }

  // The address for an out-parameter, or for a routine that frees and nulls what it is given.
  BSTR* put() {
    attach(nullptr);
    return &text_;
  }
  BSTR* address() { return &text_; }
  void attach(BSTR text) { SysFreeString(std::exchange(text_, text)); }
  [[nodiscard]] BSTR detach() { return std::exchange(text_, nullptr); }

 private:
  BSTR text_ = nullptr;
};

class Variant {
 public:
  Variant() = default;
  Variant(const Variant&) = delete;
  Variant& operator=(const Variant&) = delete;
  ~Variant() { VariantClear(&value_); }

  const VARIANT& get() const { return value_; }
  VARIANT* put() {
    VariantClear(&value_);
    return &value_;
  }
  // The text of a VT_BSTR, empty for anything else.
  std::u16string_view text() const {
    if (value_.vt != VT_BSTR || !value_.bstrVal) return {};
    return {value_.bstrVal, SysStringLen(value_.bstrVal)};
  }

 private:
  VARIANT value_;
};

template <typename T>
class LocalPtr {
 public:
  LocalPtr() = default;
  explicit LocalPtr(void* block) : block_(static_cast<T*>(block)) {}
  LocalPtr(LocalPtr&& other) noexcept : block_(std::exchange(other.block_, nullptr)) {}
  LocalPtr& operator=(LocalPtr&& other) noexcept {
    if (this != &other) reset(other.detach());
    return *this;
  }
  ~LocalPtr() { LocalFree(block_); }

  T* get() const { return block_; }
  explicit operator bool() const { return block_ != nullptr; }
  void reset(void* block = nullptr) { LocalFree(std::exchange(block_, static_cast<T*>(block))); }
  [[nodiscard]] T* detach() { return std::exchange(block_, nullptr); }

 private:
  T* block_ = nullptr;
};

}  // namespace ce
