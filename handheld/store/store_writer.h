// A tool's own connection to the store, and its batches of changes.
#pragma once

#include <limits>
#include <memory>
#include <string>
#include <utility>

#include "handheld/base/guarded.h"
#include "handheld/directory/handheld.h"
#include "handheld/store/store.h"

namespace ce::host {

// Calls answer the statuses of store_error.h, E_INVALIDARG for what is named, or for a number that
// names nothing, and E_OUTOFMEMORY; nothing throws. A call that fails has changed nothing, and its
// results are undefined. One thread.
class StoreWriter {
 public:
  // Makes the handheld's store, or brings it up to date, first. On failure `problem` says what is
  // wrong, worded for the handheld's owner.
  template <typename Writer>
  [[nodiscard]] static HRESULT Open(Handheld& handheld, std::unique_ptr<Writer>& writer,
                                    std::string& problem) {
    writer.reset();
    return Guarded("StoreWriter::Open", [&]() -> HRESULT {
      std::unique_ptr<Store> store;
      RETURN_IF_FAILED(Store::Open(handheld, store, problem));
      writer.reset(new Writer(std::move(store)));
      return S_OK;
    });
  }
  StoreWriter(const StoreWriter&) = delete;
  StoreWriter& operator=(const StoreWriter&) = delete;

  // Between Begin and Commit every change joins one transaction: success of a single call means
  // "accepted", and all of it is on the disk when Commit has succeeded. Once a change of a batch
  // has failed for want of disk or memory the whole batch is undone, and Commit answers that
  // failure. Outside a batch each successful change is on the disk on return. While a batch has
  // changes pending, others wait to write.
  void Begin() {
    batchStatus_ = S_OK;
    store_->SetBulk(&batch_);
  }
  [[nodiscard]] HRESULT Commit() {
    HRESULT status = std::exchange(batchStatus_, S_OK);
    if (Succeeded(status)) {
      status = Guarded("StoreWriter::Commit", [&] { return store_->CommitPending(); });
    }
    Abandon();
    return status;
  }
  void Abandon() {
    if (store_->bulk()) store_->AbandonPending();
    store_->SetBulk(nullptr);
    batchStatus_ = S_OK;
  }

 protected:
  explicit StoreWriter(std::unique_ptr<Store> store) : store_(std::move(store)) {}
  // What is pending in an open batch is undone.
  ~StoreWriter() { Abandon(); }

  Store& store() { return *store_; }

  // The frame of every call that writes.
  template <typename Work>
  HRESULT Change(const char* call, Work&& work) {
    if (Failed(batchStatus_)) return batchStatus_;
    const HRESULT status =
        Guarded(call, [&] { return store_->Write(nullptr, std::forward<Work>(work)); });
    // Where the disk or the memory has failed a change, its batch would hardly be committed. A
    // refusal says nothing about those.
    if (Failed(status) && status != E_INVALIDARG && store_->bulk()) {
      store_->AbandonPending();
      batchStatus_ = status;
    }
    return status;
  }

 private:
  // Above the store, which rolls it back when it goes.
  WriteGroup batch_{std::numeric_limits<int>::max()};
  const std::unique_ptr<Store> store_;
  HRESULT batchStatus_ = S_OK;
};

}  // namespace ce::host
