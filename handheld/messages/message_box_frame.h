// The frames of the message box's calls, for its own sources.
#pragma once

#include <string>
#include <string_view>
#include <utility>

#include "common/text/unicode.h"
#include "handheld/base/guarded.h"
#include "handheld/messages/message_box.h"

namespace ce::host {

template <typename Work>
HRESULT MessageBox::Call(const char* call, Work&& work) {
  return Guarded(call, std::forward<Work>(work));
}

template <typename Work>
HRESULT MessageBox::Change(const char* call, Work&& work) {
  return Guarded(call, [&] {
    if (Failed(batchStatus_)) return batchStatus_;
    HRESULT status = E_OUTOFMEMORY;
    try {
      status = store_->Write(nullptr, std::forward<Work>(work));
    } catch (const std::bad_alloc&) {
    }
    // What a call has done so far cannot be told from the rest of its batch. A refusal comes before
    // anything is done.
    if (Failed(status) && status != E_INVALIDARG && store_->bulk()) {
      store_->AbandonPending();
      batchStatus_ = status;
    }
    return status;
  });
}

inline constexpr char kMessageStep[] = "sqlite3_step:messages";

// As the store has it.
inline std::string Stored(std::u16string_view text) {
  std::string stored;
  text::AppendWtf8(stored, text);
  return stored;
}

// The bytes must live until the last step.
inline void BindEntryId(Statement& statement, int parameter, const EntryIdBytes& entryId) {
  // A null pointer would bind NULL.
  statement.BindBlob(parameter, entryId.empty() ? "" : static_cast<const void*>(entryId.data()),
                     entryId.size());
}

inline void BindEntryId(Statement& statement, int parameter,
                        const std::optional<EntryIdBytes>& entryId) {
  if (entryId) {
    BindEntryId(statement, parameter, *entryId);
  } else {
    statement.BindNull(parameter);
  }
}

inline EntryIdBytes BytesOf(const Statement& row, int column) {
  const auto [bytes, size] = row.Blob(column);
  return EntryIdBytes(bytes, bytes + size);
}

inline std::optional<EntryIdBytes> EntryIdOf(const Statement& row, int column) {
  if (row.IsNull(column)) return std::nullopt;
  return BytesOf(row, column);
}

}  // namespace ce::host
