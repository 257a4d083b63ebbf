#include "handheld/phone/phone_module.h"

#include <cstring>
#include <limits>
#include <memory>
#include <string>
#include <utility>

#include "handheld/base/guarded.h"
#include "handheld/base/handle_table.h"
#include "handheld/store/call_log.h"
#include "platform/com_ptr.h"
#include "platform/phone.h"

namespace ce::host {
namespace {

constexpr HRESULT kInvalidHandle = static_cast<HRESULT>(0x80070006);
constexpr HRESULT kNotReady = static_cast<HRESULT>(0x80070015);

// An open call log: one snapshot of the store, and the position in it.
class OpenCallLog final : public HandleObject {
 public:
  explicit OpenCallLog(std::unique_ptr<Store> store) : store_(std::move(store)) {}
  ~OpenCallLog() override {
    if (snapshot_) store_->EndSnapshot();
  }

  [[nodiscard]] HRESULT Seek(DWORD offset, DWORD& record) {
    RETURN_IF_FAILED(TakeSnapshot());
    CallPosition found;
    if (offset == 0) {
      record = 0;
      position_ = found;
      return S_OK;
    }
    bool isThere = false;
    // What is read next is what stands behind the one before.
    RETURN_IF_FAILED(FindCallPosition(*store_, offset - 1, found, isThere));
    if (!isThere) return SeekEnd(record);
    record = offset;
    position_ = found;
    return S_OK;
  }

  [[nodiscard]] HRESULT Read(NumberedCall& call, bool& found) {
    RETURN_IF_FAILED(TakeSnapshot());
    return calls_.ReadBehind(*store_, position_, call, found);
  }
  void MoveBehind(const NumberedCall& call) { position_ = call.position(); }

 private:
  [[nodiscard]] HRESULT TakeSnapshot() {
    if (snapshot_) return S_OK;
    const HRESULT status = store_->BeginSnapshot();
    snapshot_ = Succeeded(status);
    return status;
  }
  [[nodiscard]] HRESULT SeekEnd(DWORD& record) {
    std::int64_t count = 0;
    RETURN_IF_FAILED(CountCalls(*store_, count));
    record = static_cast<DWORD>(count);
    position_ = {std::numeric_limits<std::int64_t>::min(),
                 std::numeric_limits<std::int64_t>::min()};
    return S_OK;
  }

  const std::unique_ptr<Store> store_;
  CallScan calls_;
  bool snapshot_ = false;
  CallPosition position_;
};

// Local memory; null for a text that is not there. False when memory runs out.
bool CopyText(const std::optional<std::u16string>& text, LocalPtr<WCHAR>& copy) {
  if (!text) return true;
  const std::size_t bytes = (text->size() + 1) * sizeof(WCHAR);
  copy.reset(LocalAlloc(LMEM_FIXED, bytes));
  if (copy) std::memcpy(copy.get(), text->c_str(), bytes);
  return static_cast<bool>(copy);
}

FILETIME FileTimeOf(std::int64_t ticks) {
  const auto bits = static_cast<std::uint64_t>(ticks);
  return {static_cast<DWORD>(bits), static_cast<DWORD>(bits >> 32)};
}

HRESULT FillEntry(const StoredCall& call, CALLLOGENTRY& entry) {
  LocalPtr<WCHAR> number;
  LocalPtr<WCHAR> name;
  LocalPtr<WCHAR> nameType;
  LocalPtr<WCHAR> note;
  if (!CopyText(call.number, number) || !CopyText(call.name, name) ||
      !CopyText(call.nameType, nameType) || !CopyText(call.note, note)) {
    return E_OUTOFMEMORY;
  }
  entry.ftStartTime = FileTimeOf(call.startTime);
  entry.ftEndTime = FileTimeOf(call.endTime);
  entry.iom = call.kind;
  entry.dwFlags = call.flags;
  entry.cidt = call.callerIdType;
  entry.pszNumber = number.detach();
  entry.pszName = name.detach();
  entry.pszNameType = nameType.detach();
  entry.pszNote = note.detach();
  return S_OK;
}

HRESULT PhoneOpenCallLog(HANDLE* log) {
  if (!log) return E_INVALIDARG;
  *log = 0;
  return Guarded("PhoneOpenCallLog", [&]() -> HRESULT {
    Handheld* const handheld = Handheld::Current();
    if (!handheld) return kNotReady;
    std::unique_ptr<Store> store;
    std::string problem;
    const HRESULT status = Store::Open(*handheld, store, problem);
    if (Succeeded(status)) *log = AddHandle(std::make_shared<OpenCallLog>(std::move(store)));
    return status;
  });
}

HRESULT PhoneSeekCallLog(HANDLE log, DWORD from, DWORD offset, DWORD* record) {
  if (!record) return E_INVALIDARG;
  return Guarded("PhoneSeekCallLog", [&]() -> HRESULT {
    const std::shared_ptr<OpenCallLog> open = FindHandle<OpenCallLog>(log);
    if (!open) return kInvalidHandle;
    if (from != CALLLOGSEEK_BEGINNING) return E_INVALIDARG;
    return open->Seek(offset, *record);
  });
}

HRESULT PhoneGetCallLogEntry(HANDLE log, CALLLOGENTRY* entry) {
  if (!entry || entry->cbSize != sizeof(CALLLOGENTRY)) return E_INVALIDARG;
  return Guarded("PhoneGetCallLogEntry", [&]() -> HRESULT {
    const std::shared_ptr<OpenCallLog> open = FindHandle<OpenCallLog>(log);
    if (!open) return kInvalidHandle;
    NumberedCall call;
    bool found = false;
    RETURN_IF_FAILED(open->Read(call, found));
    if (!found) return S_FALSE;
    RETURN_IF_FAILED(FillEntry(call.call, *entry));
    open->MoveBehind(call);
    return S_OK;
  });
}

HRESULT PhoneCloseCallLog(HANDLE log) {
  // Closed whatever is answered: nobody would try again.
  const bool closed = FindHandle<OpenCallLog>(log) && ObjectHandles().Close(log);
  return Guarded("PhoneCloseCallLog", [&] { return closed ? S_OK : kInvalidHandle; });
}

// The row's function is found by the type that the header gives its name.
template <typename Fn>
ModuleFunction Row(std::u16string_view name, Fn function) {
  return {name, reinterpret_cast<FARPROC>(function)};
}

}  // namespace

const ModuleFunction kPhoneFunctions[4] = {
    Row<PhoneOpenCallLogFn>(u"PhoneOpenCallLog", PhoneOpenCallLog),
    Row<PhoneSeekCallLogFn>(u"PhoneSeekCallLog", PhoneSeekCallLog),
    Row<PhoneGetCallLogEntryFn>(u"PhoneGetCallLogEntry", PhoneGetCallLogEntry),
    Row<PhoneCloseCallLogFn>(u"PhoneCloseCallLog", PhoneCloseCallLog),
};

}  // namespace ce::host
