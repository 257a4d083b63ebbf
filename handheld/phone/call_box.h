// The handheld's call log, for tools that fill, show and empty it.
//
// A call is known by a number that is never given away again. Whoever downloads the log meanwhile
// does so over a connection of its own.
//
// Calls answer the statuses of outlook/store_error.h and E_OUTOFMEMORY; nothing throws. One that
// fails has changed nothing, and its results are undefined. One thread.
#pragma once

#include <cstdint>
#include <memory>
#include <string>
#include <vector>

#include "handheld/directory/handheld.h"
#include "handheld/phone/call_rows.h"

namespace ce::host {

class CallBox {
 public:
  // Makes the handheld's store, or brings it up to date, first. On failure `problem` says what is
  // wrong, worded for the handheld's owner.
  [[nodiscard]] static HRESULT Open(Handheld& handheld, std::unique_ptr<CallBox>& box,
                                    std::string& problem);
  // What is pending in an open batch is undone.
  ~CallBox();
  CallBox(const CallBox&) = delete;
  CallBox& operator=(const CallBox&) = delete;

  // Between Begin and Commit every change joins one transaction: success of a single call means
  // "accepted", and all of it is on the disk when Commit has succeeded. Once a change of a batch
  // has failed the whole batch is undone, and Commit answers that failure. Outside a batch each
  // successful change is on the disk on return. While a batch has changes pending, others wait to
  // write.
  void Begin();
  [[nodiscard]] HRESULT Commit();
  void Abandon();

  // A text ends at its first zero for whoever reads it through the telephone's library.
  [[nodiscard]] HRESULT Insert(const StoredCall& call, std::int64_t* id = nullptr);
  // Whether the log has a call that is the same in everything.
  [[nodiscard]] HRESULT Contains(const StoredCall& call, bool& found);
  // Newest first, at most `limit`, from behind `after` on. To read a log of any size call it with
  // the last call's position until it answers none.
  [[nodiscard]] HRESULT Read(const CallPosition& after, std::size_t limit,
                             std::vector<NumberedCall>& calls);
  [[nodiscard]] HRESULT Count(std::int64_t& count);
  // `found` false, and success, when there is no such call.
  [[nodiscard]] HRESULT Delete(std::int64_t id, bool& found);
  [[nodiscard]] HRESULT Clear();

 private:
  class Batch final : public WriteGroup {
   public:
    Batch();
  };

  explicit CallBox(std::unique_ptr<Store> store) : store_(std::move(store)) {}

  template <typename Work>
  HRESULT Change(const char* call, Work&& work);

  // Above the store, which rolls it back when it goes.
  Batch batch_;
  const std::unique_ptr<Store> store_;
  HRESULT batchStatus_ = S_OK;
};

}  // namespace ce::host
