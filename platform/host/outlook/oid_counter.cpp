#include "platform/host/outlook/oid_counter.h"

#include "platform/host/outlook/guard.h"
#include "platform/host/outlook/outlook_app.h"

namespace ce::host {

HRESULT StartOidsAt(IPOutlookApp* app, DWORD first) {
  static constexpr char kSql[] = "UPDATE oid_counter SET next_oid = ?1 WHERE next_oid <= ?1";
  return Guarded("StartOidsAt", [&]() -> HRESULT {
    if (first == 0) return E_INVALIDARG;
    SessionPtr session;
    if (const HRESULT status = SessionOf(app, session); Failed(status)) return status;
    Store& store = *session->store();
    return store.Write(nullptr, [&]() -> HRESULT {
      Statement start;
      if (const HRESULT status = store.Prepare(kSql, start); Failed(status)) return status;
      start.BindInteger(1, first);
      if (const HRESULT status = start.Run("sqlite3_step:write"); Failed(status)) return status;
      return store.Changes() == 0 ? E_INVALIDARG : S_OK;
    });
  });
}

}  // namespace ce::host
