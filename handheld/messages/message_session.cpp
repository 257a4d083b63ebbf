#include "handheld/messages/message_session.h"

namespace ce::host {

HRESULT MessageSession::Reading(Store*& store) {
  if (!store_) return E_FAIL;
  if (const HRESULT status = store_->CommitPending(); Failed(status)) return status;
  if (!snapshotTaken_) {
    if (const HRESULT status = store_->BeginSnapshot(); Failed(status)) return status;
    snapshotTaken_ = true;
  }
  store = store_.get();
  return S_OK;
}

HRESULT MessageSession::Delete(std::int64_t folder, const BYTE* entryId, std::size_t bytes,
                               bool& found) {
  static constexpr char kSql[] = "DELETE FROM messages WHERE entry_id = ?1 AND folder = ?2";
  found = false;
  if (!store_) return E_FAIL;
  return store_->Write(&deletions_, [&] {
    Statement remove;
    if (const HRESULT status = store_->Prepare(kSql, remove); Failed(status)) return status;
    remove.BindBlob(1, entryId, bytes);
    remove.BindInteger(2, folder);
    const HRESULT status = remove.Run("sqlite3_step:write");
    found = Succeeded(status) && store_->Changes() > 0;
    return status;
  });
}

HRESULT MessageSession::Close() {
  if (!store_) return S_OK;
  const HRESULT status = store_->CommitPending();
  store_.reset();
  return status;
}

}  // namespace ce::host
