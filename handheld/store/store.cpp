#include "handheld/store/store.h"

#include <sqlite3.h>

#include "handheld/base/fault.h"
#include "handheld/store/reserve.h"
#include "handheld/store/store_error.h"

namespace ce::host {
namespace {

constexpr char kBegin[] = "BEGIN";
constexpr char kBeginWrite[] = "BEGIN IMMEDIATE";
constexpr char kCommit[] = "COMMIT";
constexpr char kSavepoint[] = "SAVEPOINT write";
constexpr char kRelease[] = "RELEASE write";

}  // namespace

Store::~Store() {
  // Nobody is left to tell; whoever must know asks CommitPending before.
  static_cast<void>(CommitPending());
  for (Cached& cached : statements_) {
    if (cached.lentTo) cached.lentTo->GiveBack();
    sqlite3_finalize(cached.statement);
  }
  sqlite3_close(database_);
  // A deletion may have used it up; the log's room is free now.
  if (!reserve_.empty()) KeepReserve(reserve_);
}

HRESULT Store::Prepare(const char* sql, Statement& statement) {
  statement.GiveBack();
  const auto lend = [&statement](Cached& cached) {
    statement.statement_ = cached.statement;
    statement.lent_ = &cached.lentTo;
    cached.lentTo = &statement;
    return S_OK;
  };
  for (Cached& cached : statements_) {
    if (cached.sql == sql && !cached.lentTo) return lend(cached);
  }
  RETURN_IF_FAILED(FaultStatus("sqlite3_prepare"));
  Cached& added = statements_.emplace_back(Cached{sql, nullptr, nullptr});
  const HRESULT status = StoreStatus(
      sqlite3_prepare_v3(database_, sql, -1, SQLITE_PREPARE_PERSISTENT, &added.statement, nullptr));
  if (Failed(status)) {
    statements_.pop_back();
    return status;
  }
  return lend(added);
}

HRESULT Store::PrepareTransactions() {
  for (const char* sql : {kBegin, kBeginWrite, kCommit, kSavepoint, kRelease}) {
    Statement statement;
    RETURN_IF_FAILED(Prepare(sql, statement));
  }
  return S_OK;
}

void Store::PrepareToDelete() {
  if (!ReleaseReserve(reserve_) || InTransaction()) return;
  // What lies in the log moves to the database, for which there may have been no room until now.
  // Where readers stand in the way it does so at one of the next commits.
  sqlite3_wal_checkpoint_v2(database_, nullptr, SQLITE_CHECKPOINT_PASSIVE, nullptr, nullptr);
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
    ++snapshotNumber_;
  }
  ++snapshots_;
  return S_OK;
}

void Store::EndSnapshot() {
  if (--snapshots_ == 0 && snapshotOpen_) CloseSnapshot();
}

void Store::CloseSnapshot() {
  snapshotOpen_ = false;
  // One with rows left would hold on to the snapshot.
  for (const Cached& cached : statements_) {
    if (cached.lentTo) sqlite3_reset(cached.statement);
  }
  Rollback();  // nothing was written; this only lets go of the snapshot
}

HRESULT Store::BeginWrite(WriteGroup* group) {
  if (!group_ || group_ != group) RETURN_IF_FAILED(BeginTransaction(group));
  if (!group) return S_OK;
  const HRESULT status = Run(kSavepoint, "sqlite3_step:savepoint");
  if (Failed(status)) KeepPending(*group, status, true);
  return status;
}

HRESULT Store::BeginTransaction(WriteGroup* group) {
  RETURN_IF_FAILED(CommitPending());
  // A snapshot that another connection has written past could not be turned into a write.
  if (snapshotOpen_) CloseSnapshot();
  if (!turn_.Await()) return kStoreBusy;
  const HRESULT status = Run(kBeginWrite, "sqlite3_step:begin");
  if (Succeeded(status)) {
    group_ = group;
  } else {
    turn_.End();
  }
  return status;
}

HRESULT Store::EndWrite(WriteGroup* group, HRESULT status) {
  if (group) return EndGroupedWrite(*group, status);
  if (Succeeded(status)) status = Run(kCommit, "sqlite3_step:commit");
  if (Failed(status)) Rollback();
  turn_.End();
  return status;
}

HRESULT Store::EndGroupedWrite(WriteGroup& group, HRESULT status) {
  if (Succeeded(status)) status = Run(kRelease, "sqlite3_step:release");
  if (Failed(status)) {
    UndoWrite(group, status);
    return status;
  }
  return ++group.pending_ >= group.limit_ ? CommitPending() : status;
}

void Store::UndoWrite(WriteGroup& group, HRESULT status) {
  static constexpr char kUndo[] = "ROLLBACK TO write; RELEASE write";
  const int result = sqlite3_exec(database_, kUndo, nullptr, nullptr, nullptr);
  KeepPending(group, status, result == SQLITE_OK);
}

void Store::KeepPending(WriteGroup& group, HRESULT status, bool sound) {
  // A transaction in which nothing is pending must not go on keeping others from writing.
  if (sound && InTransaction() && group.pending_ > 0) return;
  if (&group == bulk_ && group.pending_ > 0) bulkStatus_ = status;
  AbandonPending();
}

void Store::AbandonPending() {
  if (!group_) return;
  WriteGroup* group = std::exchange(group_, nullptr);
  group->pending_ = 0;
  Rollback();
  turn_.End();
  group->RolledBack();
}

HRESULT Store::CommitPending() {
  if (Failed(bulkStatus_)) return std::exchange(bulkStatus_, S_OK);
  if (!group_) return S_OK;
  WriteGroup* group = std::exchange(group_, nullptr);
  group->pending_ = 0;
  const HRESULT status = Run(kCommit, "sqlite3_step:commit");
  if (Failed(status)) Rollback();
  turn_.End();
  if (Failed(status)) {
    group->RolledBack();
  } else {
    group->Committed();
  }
  return status;
}

}  // namespace ce::host
