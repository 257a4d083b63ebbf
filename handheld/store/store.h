// The handheld's store: one connection to its database, for one thread.
//
// Nothing here throws but std::bad_alloc; failures are the statuses of store_error.h. What a write
// outside a group answered with success is on the disk.
//
// Reading: while a snapshot is held, all reads see the store as it was at the first read of it. A
// write through the same connection ends the snapshot; later reads see the store as it is.
#pragma once

#include <concepts>
#include <cstdint>
#include <deque>
#include <filesystem>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "handheld/directory/handheld.h"
#include "handheld/store/write_turn.h"
#include "platform/status.h"
#include "platform/types.h"

struct sqlite3;
struct sqlite3_stmt;

namespace ce::host {

// A prepared statement on loan from its store, reset when it goes or the store does. Parameters and
// columns count as in SQLite: parameters from 1, columns from 0. Stored text and bytes that are
// bound or read by view are borrowed: bound ones must live until the last Step, column views until
// the next one.
class Statement {
 public:
  Statement() = default;
  Statement(const Statement&) = delete;
  Statement& operator=(const Statement&) = delete;
  ~Statement();

  // Ends the loan.
  void GiveBack();

  // As a row's member of this type is kept. An optional one without a value is NULL.
  template <std::integral T>
  void Bind(int parameter, T value) {
    BindInteger(parameter, static_cast<std::int64_t>(value));
  }
  void Bind(int parameter, double value);
  void Bind(int parameter, std::string_view stored);
  void Bind(int parameter, std::u16string_view value);  // not borrowed
  void Bind(int parameter, const std::vector<BYTE>& bytes);
  template <typename T>
  void Bind(int parameter, const std::optional<T>& value) {
    value ? Bind(parameter, *value) : BindNull(parameter);
  }
  void BindNull(int parameter);
  // Of no bytes as well; NULL for a null pointer.
  void BindBlob(int parameter, const void* bytes, std::size_t count);

  // `row` tells whether there is one; false ends the statement. `faultPoint` names this step for
  // fault plans. A failed binding is reported here.
  [[nodiscard]] HRESULT Step(const char* faultPoint, bool& row);
  // For statements without rows.
  [[nodiscard]] HRESULT Run(const char* faultPoint);
  // Calls `visit` with every row that is left.
  template <typename Visit>
  [[nodiscard]] HRESULT ForEachRow(const char* faultPoint, Visit&& visit) {
    for (;;) {
      bool row = false;
      RETURN_IF_FAILED(Step(faultPoint, row));
      if (!row) return S_OK;
      visit();
    }
  }

  bool IsNull(int column) const;
  std::int64_t Integer(int column) const;
  double Real(int column) const;
  std::string_view Text(int column) const;
  std::pair<const BYTE*, std::size_t> Blob(int column) const;

  // What was bound, back as a row's member.
  template <std::integral T>
  void Load(int column, T& value) const {
    value = static_cast<T>(Integer(column));
  }
  void Load(int column, double& value) const { value = Real(column); }
  void Load(int column, std::u16string& value) const;
  void Load(int column, std::vector<BYTE>& bytes) const;
  template <typename T>
  void Load(int column, std::optional<T>& value) const {
    value.reset();
    if (!IsNull(column)) Load(column, value.emplace());
  }

 private:
  friend class Store;

  void BindInteger(int parameter, std::int64_t value);
  void Note(int result);

  sqlite3_stmt* statement_ = nullptr;
  Statement** lent_ = nullptr;  // where the store knows of the loan
  int bindResult_ = 0;
};

// Writes that share a transaction: it is committed when `limit` of them are pending, when another
// group's or a single write comes, and by CommitPending. A write that fails undoes itself alone.
class WriteGroup {
 public:
  explicit WriteGroup(int limit) : limit_(limit) {}
  WriteGroup(const WriteGroup&) = delete;
  WriteGroup& operator=(const WriteGroup&) = delete;
  virtual ~WriteGroup() = default;

 private:
  friend class Store;
  virtual void Committed() {}
  // What was pending has not been stored.
  virtual void RolledBack() {}

  const int limit_;
  int pending_ = 0;
};

class Store {
 public:
  // Opens the handheld's store, making it or bringing it up to date first. Of a handheld that is
  // shared nothing can be written, and a snapshot is held from the first read on. On failure
  // `problem` says what is wrong, worded for the handheld's owner.
  [[nodiscard]] static HRESULT Open(Handheld& handheld, std::unique_ptr<Store>& store,
                                    std::string& problem);
  // As Open, but leaves the file as it is: a store that does not exist or has another format is a
  // failure.
  [[nodiscard]] static HRESULT OpenExisting(const Handheld& handheld, std::unique_ptr<Store>& store,
                                            std::string& problem);
  [[nodiscard]] static HRESULT OpenExisting(const Handheld& handheld,
                                            const std::filesystem::path& path,
                                            std::unique_ptr<Store>& store, std::string& problem);
  // False as well for a file without content, which is what is left when making it fails early.
  static bool Exists(const std::filesystem::path& path);
  // Commits what is pending, and keeps room for deletions.
  ~Store();
  Store(const Store&) = delete;
  Store& operator=(const Store&) = delete;

  // `sql` must live as long as the store and is known by its address. What `statement` had is given
  // back.
  [[nodiscard]] HRESULT Prepare(const char* sql, Statement& statement);
  // With `values` bound to its first parameters.
  template <typename... Values>
  [[nodiscard]] HRESULT Prepare(const char* sql, Statement& statement, const Values&... values) {
    RETURN_IF_FAILED(Prepare(sql, statement));
    int parameter = 0;
    (statement.Bind(++parameter, values), ...);
    return S_OK;
  }
  // Prepares, and steps to the first row. `row` tells whether there is one.
  template <typename... Values>
  [[nodiscard]] HRESULT Find(const char* sql, const char* faultPoint, Statement& statement,
                             bool& row, const Values&... values) {
    row = false;
    RETURN_IF_FAILED(Prepare(sql, statement, values...));
    return statement.Step(faultPoint, row);
  }
  // A statement without rows.
  template <typename... Values>
  [[nodiscard]] HRESULT Run(const char* sql, const char* faultPoint, const Values&... values) {
    Statement statement;
    RETURN_IF_FAILED(Prepare(sql, statement, values...));
    return statement.Run(faultPoint);
  }
  // The same; `found` tells whether it changed any row.
  template <typename... Values>
  [[nodiscard]] HRESULT Change(const char* sql, const char* faultPoint, bool& found,
                               const Values&... values) {
    found = false;
    RETURN_IF_FAILED(Run(sql, faultPoint, values...));
    found = Changes() > 0;
    return S_OK;
  }
  // See CopyDatabase of store_copy.h.
  [[nodiscard]] HRESULT CopyTo(const std::filesystem::path& to);
  // To be called in front of a write that deletes: on a full volume it gives the write the room
  // that is kept for that.
  void PrepareToDelete();
  // Rows that the last write changed.
  int Changes() const;

  // Snapshots nest: the outermost counts.
  [[nodiscard]] HRESULT BeginSnapshot();
  void EndSnapshot();
  // The number of the snapshot that is held, never that of another one; 0 while none is. A
  // statement whose rows were not all read is reset when its snapshot ends.
  std::uint64_t snapshot() const { return snapshotOpen_ ? snapshotNumber_ : 0; }

  // Runs `work` in a transaction. Without a group it is committed on return, or undone when `work`
  // or the commit fails. With a group it joins the group's transaction; a failure of the commit
  // that it sets off is its own.
  template <typename Work>
  [[nodiscard]] HRESULT Write(WriteGroup* group, Work&& work) {
    if (bulk_) {
      RETURN_IF_FAILED(bulkStatus_);
      group = bulk_;
    }
    RETURN_IF_FAILED(BeginWrite(group));
    try {
      return EndWrite(group, std::forward<Work>(work)());
    } catch (...) {
      static_cast<void>(EndWrite(group, E_OUTOFMEMORY));
      throw;
    }
  }
  // Commits what is pending in the open group. Some failures (a full disk, say) make the database
  // undo the whole transaction; of the group that is set below, that failure is then the status of
  // each further write and of the commit.
  [[nodiscard]] HRESULT CommitPending();
  // Undoes it instead.
  void AbandonPending();
  bool IsOpen(const WriteGroup& group) const { return group_ == &group; }
  // While set, every write joins this group. Null ends that; commit what is pending before.
  void SetBulk(WriteGroup* group) {
    bulk_ = group;
    bulkStatus_ = S_OK;
  }
  const WriteGroup* bulk() const { return bulk_; }

 private:
  Store() = default;

  [[nodiscard]] static HRESULT OpenToLook(const Handheld& handheld, std::unique_ptr<Store>& store,
                                          std::string& problem);
  [[nodiscard]] HRESULT Connect(const std::string& path, bool create, std::string& problem);
  // Ahead of the need, so that a commit cannot fail for want of its statement.
  [[nodiscard]] HRESULT PrepareTransactions();
  [[nodiscard]] HRESULT BeginWrite(WriteGroup* group);
  [[nodiscard]] HRESULT BeginTransaction(WriteGroup* group);
  [[nodiscard]] HRESULT EndWrite(WriteGroup* group, HRESULT status);
  [[nodiscard]] HRESULT EndGroupedWrite(WriteGroup& group, HRESULT status);
  void UndoWrite(WriteGroup& group, HRESULT status);
  // Behind a write of the open group that failed. `sound` tells whether that one is undone.
  void KeepPending(WriteGroup& group, HRESULT status, bool sound);
  void CloseSnapshot();
  void Rollback();
  bool InTransaction() const;

  struct Cached {
    const char* sql;
    sqlite3_stmt* statement;
    Statement* lentTo;
  };

  sqlite3* database_ = nullptr;
  std::filesystem::path reserve_;  // the file that keeps room for deletions
  WriteTurn turn_;                 // while a transaction that writes is open
  std::deque<Cached> statements_;  // which stay where they are
  WriteGroup* group_ = nullptr;    // whose transaction is open
  WriteGroup* bulk_ = nullptr;
  HRESULT bulkStatus_ = S_OK;  // why what was pending in it is lost
  int snapshots_ = 0;
  bool snapshotOpen_ = false;
  std::uint64_t snapshotNumber_ = 0;
};

}  // namespace ce::host
