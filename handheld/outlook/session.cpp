#include "handheld/outlook/session.h"

namespace ce::host {

HRESULT Session::Close() {
  if (!store_) return S_OK;
  const HRESULT status = store_->CommitPending();
  store_.reset();
  return status;
}

}  // namespace ce::host
