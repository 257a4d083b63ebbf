#include "agent/core/memory_stream.h"

#include <algorithm>
#include <cstring>

#include "platform/memory.h"
#include "platform/status.h"
#include "platform/threads.h"

namespace corvane {

MemoryStream::~MemoryStream() {
  ce::LocalFree(buffer_);
}

ce::HRESULT MemoryStream::QueryInterface(const ce::GUID& iid, void** out) {
  if (iid == ce::IUnknown::kIid || iid == ce::IStream::kIid) {
    *out = static_cast<ce::IStream*>(this);
  }
  // Through whatever is there, as callers of this stream have always had it.
  if (*out) static_cast<ce::IUnknown*>(*out)->AddRef();
  return ce::S_OK;
}

ce::DWORD MemoryStream::AddRef() {
  return static_cast<ce::DWORD>(ce::InterlockedIncrement(&references_));
}

ce::DWORD MemoryStream::Release() {
  const ce::LONG left = ce::InterlockedDecrement(&references_);
  if (left != 0) return static_cast<ce::DWORD>(left);
  delete this;
  return 0;
}

ce::HRESULT MemoryStream::Read(void* buffer, ce::DWORD bytes, ce::DWORD* read) {
  if (!buffer_) return ce::E_FAIL;
  const ce::DWORD count = std::min(size_ - position_, bytes);
  if (count > 0) std::memcpy(buffer, buffer_ + position_, count);
  position_ += count;
  if (read) *read = count;
  return ce::S_OK;
}

ce::HRESULT MemoryStream::Write(const void* buffer, ce::DWORD bytes, ce::DWORD* written) {
  // After a growth that failed the bytes so far are gone, and later ones have no place to go.
  if (!buffer_ && size_ > 0) return static_cast<ce::HRESULT>(ce::ERROR_NOT_ENOUGH_MEMORY);
  void* grown = buffer_ ? ce::LocalReAlloc(buffer_, std::size_t{size_} + bytes, ce::LMEM_MOVEABLE)
                        : ce::LocalAlloc(ce::LMEM_FIXED, bytes);
  const auto status = ce::LastErrorStatus();
  if (!grown) ce::LocalFree(buffer_);
  buffer_ = static_cast<ce::BYTE*>(grown);
  if (!buffer_) return status;
  if (bytes > 0) std::memcpy(buffer_ + size_, buffer, bytes);
  size_ += bytes;
  if (written) *written = bytes;
  return status;
}

ce::HRESULT MemoryStream::Seek(ce::LONGLONG, ce::DWORD, ce::ULONGLONG*) {
  return ce::E_FAIL;
}
ce::HRESULT MemoryStream::SetSize(ce::ULONGLONG) {
  return ce::E_FAIL;
}
ce::HRESULT MemoryStream::CopyTo(ce::IStream*, ce::ULONGLONG, ce::ULONGLONG*, ce::ULONGLONG*) {
  return ce::E_FAIL;
}
ce::HRESULT MemoryStream::Commit(ce::DWORD) {
  return ce::E_FAIL;
}
ce::HRESULT MemoryStream::Revert() {
  return ce::E_FAIL;
}
ce::HRESULT MemoryStream::LockRegion(ce::ULONGLONG, ce::ULONGLONG, ce::DWORD) {
  return ce::E_FAIL;
}
ce::HRESULT MemoryStream::UnlockRegion(ce::ULONGLONG, ce::ULONGLONG, ce::DWORD) {
  return ce::E_FAIL;
}
ce::HRESULT MemoryStream::Stat(void*, ce::DWORD) {
  return ce::E_FAIL;
}
ce::HRESULT MemoryStream::Clone(ce::IStream**) {
  return ce::E_FAIL;
}

}  // namespace corvane
