// What a logged-on application, its folders, collections and items share.
#pragma once

#include <limits>
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
  ~Session() { UndoTransaction(); }

  // Null after Logoff.
  Store* store() const { return store_.get(); }
  const ItemLimits& limits() const { return limits_; }

  // As IPOutlookTransactions has it.
  [[nodiscard]] HRESULT BeginTransaction() {
    if (!store_ || store_->bulk()) return E_FAIL;
    store_->SetBulk(&transaction_);
    return S_OK;
  }
  [[nodiscard]] HRESULT CommitTransaction() {
    if (!InTransaction()) return E_FAIL;
    const HRESULT status = store_->CommitPending();
    store_->SetBulk(nullptr);
    return status;
  }
  void UndoTransaction() {
    if (!InTransaction()) return;
    store_->AbandonPending();
    store_->SetBulk(nullptr);
  }

  // Commits what is pending outside a transaction, reports how that went, and closes the store in
  // any case.
  HRESULT Close() {
    if (!store_) return S_OK;
    UndoTransaction();
    const HRESULT status = store_->CommitPending();
    store_.reset();
    return status;
  }

 private:
  bool InTransaction() const { return store_ && store_->bulk() == &transaction_; }

  // Above the store, which looks at it when it goes.
  WriteGroup transaction_{std::numeric_limits<int>::max()};
  std::unique_ptr<Store> store_;
  const ItemLimits limits_;
};

using SessionPtr = std::shared_ptr<Session>;

}  // namespace ce::host
