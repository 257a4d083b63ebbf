// Rows that are asked for one by one, in the order in which one statement finds them.
#pragma once

#include "handheld/store/store.h"

namespace ce::host {

// A statement that goes on from row to row as long as the store holds the snapshot that it was
// begun in. Where none is held, or the rows are wanted from somewhere else, it is begun anew. After
// a failure, and behind its last row, it is over.
class RowScan {
 public:
  bool GoesOn(const Store& store) const { return snapshot_ != 0 && snapshot_ == store.snapshot(); }

  // With `values` bound to the first parameters of `sql`; none of them is borrowed.
  template <typename... Values>
  [[nodiscard]] HRESULT Begin(Store& store, const char* sql, const Values&... values) {
    End();
    RETURN_IF_FAILED(store.Prepare(sql, rows_, values...));
    snapshot_ = store.snapshot();
    return S_OK;
  }
  // `row` tells whether there is one.
  [[nodiscard]] HRESULT Next(const char* faultPoint, bool& row) {
    const HRESULT status = rows_.Step(faultPoint, row);
    if (!row) End();
    return status;
  }
  // The row that Next found.
  const Statement& row() const { return rows_; }

  void End() {
    rows_.GiveBack();
    snapshot_ = 0;
  }
  // Without a snapshot its rows would be those of different times.
  void EndWithoutSnapshot() {
    if (snapshot_ == 0) End();
  }

 private:
  Statement rows_;
  std::uint64_t snapshot_ = 0;
};

}  // namespace ce::host
