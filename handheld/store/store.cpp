#include "handheld/store/store.h"

#include <sqlite3.h>

#include "handheld/base/fault.h"
#include "handheld/store/store_error.h"

namespace ce::host {
namespace {

constexpr char kBegin[] = "BEGIN";
constexpr char kBeginWrite[] = "BEGIN IMMEDIATE";
constexpr char kCommit[] = "COMMIT";

}  // namespace

Store::~Store() {
  // Nobody is left to tell; whoever must know asks CommitPending before.
  static_cast<void>(CommitPending());
  for (const Cached& cached : statements_) sqlite3_finalize(cached.statement);
  sqlite3_close(database_);
}

HRESULT Store::Prepare(const char* sql, Statement& statement) {
  for (const Cached& cached : statements_) {
    if (cached.sql == sql) {
      statement.statement_ = cached.statement;
      return S_OK;
    }
  }
  RETURN_IF_FAILED(FaultStatus("sqlite3_prepare"));
  statements_.reserve(statements_.size() + 1);
  sqlite3_stmt* prepared = nullptr;
  const int result =
      sqlite3_prepare_v3(database_, sql, -1, SQLITE_PREPARE_PERSISTENT, &prepared, nullptr);
  RETURN_IF_FAILED(StoreStatus(result));
  statements_.push_back({sql, prepared});
  statement.statement_ = prepared;
  return S_OK;
}

HRESULT Store::PrepareTransactions() {
  for (const char* sql : {kBegin, kBeginWrite, kCommit}) {
    Statement statement;
    RETURN_IF_FAILED(Prepare(sql, statement));
  }
  return S_OK;
}

int Store::Changes() const {
  return sqlite3_changes(database_);
}

bool Store::InTransaction() const {
  return sqlite3_get_autocommit(database_) == 0;
}

void Store::Rollback() {
  if (InTransaction()) sqlite3_exec(database_, "ROLLBACK", nullptr, nullptr, nullptr);
}

HRESULT Store::BeginSnapshot() {
  if (!snapshotOpen_ && !group_) {
    RETURN_IF_FAILED(Run(kBegin, "sqlite3_step:begin"));
    snapshotOpen_ = true;
  }
  ++snapshots_;
  return S_OK;
}

void Store::EndSnapshot() {
  if (--snapshots_ > 0 || !snapshotOpen_) return;
  snapshotOpen_ = false;
  Rollback();  // nothing was written; this only lets go of the snapshot
}

HRESULT Store::BeginWrite(WriteGroup* group) {
  if (group_ && group_ == group) return S_OK;
  RETURN_IF_FAILED(CommitPending());
  // A snapshot that another connection has written past could not be turned into a write.
  if (snapshotOpen_) {
    snapshotOpen_ = false;
    Rollback();
  }
  const HRESULT status = Run(kBeginWrite, "sqlite3_step:begin");
  if (Succeeded(status)) group_ = group;
  return status;
}

HRESULT Store::EndWrite(WriteGroup* group, HRESULT status) {
  if (!group) {
    if (Succeeded(status)) status = Run(kCommit, "sqlite3_step:commit");
    if (Failed(status)) Rollback();
    return status;
  }
  if (Failed(status)) {
    // Some errors (a full disk, say) undo the whole transaction on their own. One in which nothing
    // is pending must not go on keeping others from writing.
    if (!InTransaction() || group->pending_ == 0) AbandonPending();
    return status;
  }
  return ++group->pending_ >= group->limit_ ? CommitPending() : status;
}

void Store::AbandonPending() {
  if (!group_) return;
  WriteGroup* group = std::exchange(group_, nullptr);
  group->pending_ = 0;
  Rollback();
  group->RolledBack();
}

HRESULT Store::CommitPending() {
  if (!group_) return S_OK;
  WriteGroup* group = std::exchange(group_, nullptr);
  group->pending_ = 0;
  const HRESULT status = Run(kCommit, "sqlite3_step:commit");
  if (Failed(status)) {
    Rollback();
    group->RolledBack();
  } else {
    group->Committed();
  }
  return status;
}

}  // namespace ce::host
