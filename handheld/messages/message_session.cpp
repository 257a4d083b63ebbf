#include "handheld/messages/message_session.h"

namespace ce::host {

HRESULT MessageSession::Reading(Store*& store) {
  if (!store_) return E_FAIL;
  RETURN_IF_FAILED(store_->CommitPending());
  if (!snapshotTaken_) {
    RETURN_IF_FAILED(store_->BeginSnapshot());
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
  store_->PrepareToDelete();
  return store_->Write(&deletions_, [&]() -> HRESULT {
    Statement remove;
    RETURN_IF_FAILED(store_->Prepare(kSql, remove));
    remove.BindBlob(1, entryId, bytes);
    remove.Bind(2, folder);
    RETURN_IF_FAILED(remove.Run("sqlite3_step:write"));
    found = store_->Changes() > 0;
    return S_OK;
  });
}

HRESULT MessageSession::Close() {
  if (!store_) return S_OK;
  const HRESULT status = store_->CommitPending();
  store_.reset();
  return status;
}

}  // namespace ce::host
