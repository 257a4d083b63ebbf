#include "platform/host/outlook/session.h"

namespace ce::host {

ItemLimits ReadItemLimits(const Handheld& handheld) {
  ItemLimits limits;
  limits.text = handheld.Number(setting::kMaxContactText, static_cast<DWORD>(ItemLimits{}.text));
  limits.body = handheld.Number(setting::kMaxBody, static_cast<DWORD>(ItemLimits{}.body));
  limits.yomiFields = handheld.Number(setting::kYomiFields, 1) != 0;
  return limits;
}

HRESULT Session::Close() {
  if (!store_) return S_OK;
  const HRESULT status = store_->CommitPending();
  store_.reset();
  return status;
}

}  // namespace ce::host
