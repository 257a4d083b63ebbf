// What a logged-on MAPI session, its stores, folders, tables and messages share.
#pragma once

#include <cstdint>
#include <memory>
#include <utility>

#include "handheld/store/row_scan.h"
#include "platform/types.h"

namespace ce::host {

// Lives from MAPILogonEx as long as anything of it is held; without a store after Logoff.
//
// Holds one snapshot from its first read until it deletes. Deletions share transactions of
// kDeletesPerCommit, so that emptying a folder costs one disk synchronisation for many messages;
// the next read, and Logoff, commit what is pending and answer how that went.
class MessageSession {
 public:
  static constexpr int kDeletesPerCommit = 256;

  explicit MessageSession(std::unique_ptr<Store> store) : store_(std::move(store)) {}

  // The store, for reading; E_FAIL after Logoff.
  [[nodiscard]] HRESULT Reading(Store*& store);
  // Deletes a message of the folder. `found` tells whether there was one.
  [[nodiscard]] HRESULT Delete(std::int64_t folder, const BYTE* entryId, std::size_t bytes,
                               bool& found);
  HRESULT Close();

  // The message whose row a contents table has read last: whoever reads a folder row by row opens
  // each message next, and need not look for it.
  struct MessageAtHand {
    const RowScan* rows = nullptr;  // which stands at it
    std::int64_t id = 0;
    std::int64_t folder = 0;
  };
  void PutAtHand(const MessageAtHand& message) { atHand_ = message; }
  // Before `rows` go on, or go.
  void LetGoOf(const RowScan& rows) {
    if (atHand_.rows == &rows) atHand_ = {};
  }
  // Null when there is none.
  const MessageAtHand* AtHand() const {
    return atHand_.rows && store_ && atHand_.rows->GoesOn(*store_) ? &atHand_ : nullptr;
  }

 private:
  class Deletions final : public WriteGroup {
   public:
    Deletions() : WriteGroup(kDeletesPerCommit) {}
  };

  // Above the store: the store commits what is pending when it goes.
  Deletions deletions_;
  std::unique_ptr<Store> store_;
  bool snapshotTaken_ = false;
  MessageAtHand atHand_;
};

using MessageSessionPtr = std::shared_ptr<MessageSession>;

}  // namespace ce::host
