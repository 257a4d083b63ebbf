#include <string>
#include <utility>

#include "handheld/base/com_object.h"
#include "handheld/base/guarded.h"
#include "handheld/directory/handheld.h"
#include "handheld/messages/objects.h"
#include "handheld/messages/table.h"
#include "platform/com_ptr.h"
#include "platform/status.h"

namespace ce {
namespace host {
namespace {

constexpr char kFindStore[] = "SELECT id FROM message_stores WHERE entry_id = ?1 AND ?2 = 0";

// Of this thread.
thread_local int t_initialized = 0;

class MapiSession final : public UnknownObject<IMAPISession> {
 public:
  explicit MapiSession(MessageSessionPtr session) : session_(std::move(session)) {}

  HRESULT GetMsgStoresTable(DWORD, IMAPITable** table) override {
    if (!table) return E_POINTER;
    *table = nullptr;
    return Guarded("IMAPISession::GetMsgStoresTable", [&]() -> HRESULT {
      Store* store = nullptr;
      RETURN_IF_FAILED(session_->Reading(store));
      *table = MakeTable(session_, kStoresTable, 0);
      return S_OK;
    });
  }

  HRESULT OpenMsgStore(DWORD, DWORD entryIdBytes, const ENTRYID* entryId, const GUID* interfaceId,
                       DWORD, IMsgStore** result) override {
    if (!result) return E_POINTER;
    *result = nullptr;
    return Guarded("IMAPISession::OpenMsgStore", [&]() -> HRESULT {
      if (interfaceId && !(*interfaceId == IMsgStore::kIid)) return E_NOINTERFACE;
      Store* store = nullptr;
      RETURN_IF_FAILED(session_->Reading(store));
      std::int64_t id = 0;
      const HRESULT status = FindEntry(*store, kFindStore, entryId, entryIdBytes, 0, id);
      if (Succeeded(status)) *result = MakeMsgStore(session_, id);
      return status;
    });
  }

  HRESULT Logoff(DWORD, DWORD, DWORD) override {
    HRESULT closed = S_OK;
    const HRESULT status = Guarded("IMAPISession::Logoff", [&] { return S_OK; });
    if (session_) closed = session_->Close();
    return Failed(status) ? status : closed;
  }

 private:
  ~MapiSession() override = default;

  const MessageSessionPtr session_;
};

HRESULT OpenSession(IMAPISession** session) {
  if (t_initialized == 0) return MAPI_E_NOT_INITIALIZED;
  Handheld* handheld = Handheld::Current();
  if (!handheld) return E_FAIL;
  std::unique_ptr<Store> store;
  std::string problem;
  RETURN_IF_FAILED(Store::Open(*handheld, store, problem));
  *session = new MapiSession(std::make_shared<MessageSession>(std::move(store)));
  return S_OK;
}

// Callers ask the last error why, and take it for a positive system code.
HRESULT WithLastError(HRESULT status) {
  if (Failed(status)) {
    const auto code = static_cast<DWORD>(status);
    SetLastError(status == MAPI_E_NOT_INITIALIZED    ? ERROR_NOT_READY
                 : (code & 0xFFFF0000) == 0x80070000 ? code & 0xFFFF
                                                     : ERROR_GEN_FAILURE);
  }
  return status;
}

}  // namespace
}  // namespace host

HRESULT MAPIInitialize(void*) {
  return host::WithLastError(host::Guarded("MAPIInitialize", [] {
    ++host::t_initialized;
    return S_OK;
  }));
}

void MAPIUninitialize() {
  if (host::t_initialized > 0) --host::t_initialized;
}

HRESULT MAPILogonEx(DWORD, const WCHAR*, const WCHAR*, DWORD, IMAPISession** session) {
  if (!session) return host::WithLastError(E_POINTER);
  *session = nullptr;
  return host::WithLastError(
      host::Guarded("MAPILogonEx", [&] { return host::OpenSession(session); }));
}

}  // namespace ce
