// An IStream in memory that takes what is written to it, such as a document that is being saved.
#pragma once

#include <atomic>

#include "platform/com.h"

namespace corvane {

// Lives on its user's stack with one reference of its own; deleted by Release only when made with
// new. Belongs to one thread, the count apart.
class MemoryStream final : public ce::IStream {
 public:
  MemoryStream() = default;
  MemoryStream(const MemoryStream&) = delete;
  MemoryStream& operator=(const MemoryStream&) = delete;
  ~MemoryStream();

  // Null until the first Write, and again after a growth that failed.
  const ce::BYTE* Buffer() const { return buffer_; }
  ce::DWORD Size() const { return size_; }

  // Always S_OK. For an interface that it lacks `*out` keeps the caller's value, and the reference
  // is counted on that.
  ce::HRESULT QueryInterface(const ce::GUID& iid, void** out) override;
  ce::DWORD AddRef() override;
  ce::DWORD Release() override;

  // From the read position, which only Read moves; E_FAIL before the first Write.
  ce::HRESULT Read(void* buffer, ce::DWORD bytes, ce::DWORD* read) override;
  // Appends all or nothing. The status is the allocator's last error, also when it succeeds.
  ce::HRESULT Write(const void* buffer, ce::DWORD bytes, ce::DWORD* written) override;

  // All E_FAIL.
  ce::HRESULT Seek(ce::LONGLONG move, ce::DWORD origin, ce::ULONGLONG* position) override;
  ce::HRESULT SetSize(ce::ULONGLONG size) override;
  ce::HRESULT CopyTo(ce::IStream* target, ce::ULONGLONG bytes, ce::ULONGLONG* read,
                     ce::ULONGLONG* written) override;
  ce::HRESULT Commit(ce::DWORD flags) override;
  ce::HRESULT Revert() override;
  ce::HRESULT LockRegion(ce::ULONGLONG offset, ce::ULONGLONG bytes, ce::DWORD type) override;
  ce::HRESULT UnlockRegion(ce::ULONGLONG offset, ce::ULONGLONG bytes, ce::DWORD type) override;
  ce::HRESULT Stat(void* statistics, ce::DWORD flags) override;
  ce::HRESULT Clone(ce::IStream** copy) override;

 private:
  ce::BYTE* buffer_ = nullptr;
  std::atomic<ce::LONG> references_{1};
  ce::DWORD size_ = 0;
  ce::DWORD position_ = 0;
};

}  // namespace corvane
