// What a logged-on application, its folders, collections and items share.
#pragma once

#include <memory>
#include <utility>

#include "handheld/store/item_limits.h"
#include "handheld/store/store.h"

namespace ce::host {

// Lives from Logon as long as anything of it is held; without a store after Logoff.
class Session {
 public:
  Session(std::unique_ptr<Store> store, const ItemLimits& limits)
      : store_(std::move(store)), limits_(limits) {}

  // Null after Logoff.
  Store* store() const { return store_.get(); }
  const ItemLimits& limits() const { return limits_; }

  // Commits what is pending, reports how that went, and closes the store in any case.
  HRESULT Close() {
    if (!store_) return S_OK;
    const HRESULT status = store_->CommitPending();
    store_.reset();
    return status;
  }

 private:
  std::unique_ptr<Store> store_;
  const ItemLimits limits_;
};

using SessionPtr = std::shared_ptr<Session>;

}  // namespace ce::host
