#include "handheld/outlook/store_batch.h"

#include "handheld/outlook/outlook_app.h"

namespace ce::host {

HRESULT StoreBatch::Begin(IPOutlookApp* app) {
  if (const HRESULT status = SessionOf(app, session_); Failed(status)) return status;
  session_->store()->SetBulk(&group_);
  return S_OK;
}

StoreBatch::~StoreBatch() {
  Store* store = session_ ? session_->store() : nullptr;
  if (!store) return;
  if (store->IsOpen(group_)) store->AbandonPending();
  store->SetBulk(nullptr);
}

HRESULT StoreBatch::Commit() {
  Store* store = session_ ? session_->store() : nullptr;
  return store ? store->CommitPending() : E_FAIL;
}

}  // namespace ce::host
