#include "handheld/store/call_log.h"

namespace ce::host {
namespace {

constexpr char kStep[] = "sqlite3_step:calls";

std::string InsertCallSql() {
  ColumnNames columns;
  AppendNames(columns, kCallColumns);
  return InsertSql("INSERT INTO calls", columns) + " RETURNING id";
}

// Behind the position of ?1 and ?2. Each half is one look into the index, however many calls there
// are at one time.
const std::string& CallsBehindSql() {
  static const std::string kSql = [] {
    ColumnNames columns = {"id"};
    AppendNames(columns, kCallColumns);
    const std::string select =
        "SELECT " + ColumnList(ColumnForm::kNames, columns, 1) + " FROM calls WHERE start_time ";
    return select + "= ?1 AND id < ?2 UNION ALL " + select +
           "< ?1 ORDER BY start_time DESC, id DESC";
  }();
  return kSql;
}

void LoadCall(const Statement& row, NumberedCall& call) {
  row.Load(0, call.id);
  LoadColumns<StoredCall>(row, 1, kCallColumns, call.call);
}

}  // namespace

HRESULT CallScan::ReadBehind(Store& store, const CallPosition& position, NumberedCall& call,
                             bool& found) {
  if (!(last_ == position) || !rows_.GoesOn(store)) {
    RETURN_IF_FAILED(rows_.Begin(store, CallsBehindSql().c_str(), position.startTime, position.id));
  }
  RETURN_IF_FAILED(rows_.Next(kStep, found));
  if (!found) return S_OK;
  last_ = {rows_.row().Integer(1), rows_.row().Integer(0)};
  LoadCall(rows_.row(), call);
  rows_.EndWithoutSnapshot();
  return S_OK;
}

HRESULT FindCallPosition(Store& store, std::int64_t offset, CallPosition& position, bool& found) {
  static constexpr char kSql[] =
      "SELECT start_time, id FROM calls ORDER BY start_time DESC, id DESC LIMIT 1 OFFSET ?1";
  Statement find;
  RETURN_IF_FAILED(store.Find(kSql, kStep, find, found, offset));
  if (found) position = {find.Integer(0), find.Integer(1)};
  return S_OK;
}

HRESULT CountCalls(Store& store, std::int64_t& count) {
  static constexpr char kSql[] = "SELECT count(*) FROM calls";
  Statement find;
  bool row = false;
  RETURN_IF_FAILED(store.Find(kSql, kStep, find, row));
  if (row) count = find.Integer(0);
  return S_OK;
}

HRESULT CallLog::Insert(const StoredCall& call, std::int64_t* id) {
  static const std::string kSql = InsertCallSql();
  return Change("CallLog::Insert", [&]() -> HRESULT {
    Statement insert;
    RETURN_IF_FAILED(store().Prepare(kSql.c_str(), insert));
    BindColumns<StoredCall>(insert, 1, kCallColumns, call);
    bool row = false;
    RETURN_IF_FAILED(insert.Step(kStep, row));
    if (!row) return E_FAIL;
    if (id) *id = insert.Integer(0);
    return insert.Run(kStep);
  });
}

HRESULT CallLog::Contains(const StoredCall& call, bool& found) {
  static constexpr char kSql[] =
      "SELECT 1 FROM calls WHERE start_time = ?1 AND end_time = ?2 AND kind = ?3 AND flags = ?4"
      " AND caller_id_type = ?5 AND number IS ?6 AND name IS ?7 AND name_type IS ?8"
      " AND note IS ?9 LIMIT 1";
  return Guarded("CallLog::Contains", [&]() -> HRESULT {
    Statement find;
    RETURN_IF_FAILED(store().Prepare(kSql, find));
    BindColumns<StoredCall>(find, 1, kCallColumns, call);
    return find.Step(kStep, found);
  });
}

HRESULT CallLog::Read(const CallPosition& after, std::size_t limit,
                      std::vector<NumberedCall>& calls) {
  calls.clear();
  return Guarded("CallLog::Read", [&]() -> HRESULT {
    Statement read;
    RETURN_IF_FAILED(store().Prepare(CallsBehindSql().c_str(), read, after.startTime, after.id));
    while (calls.size() < limit) {
      bool found = false;
      RETURN_IF_FAILED(read.Step(kStep, found));
      if (!found) return S_OK;
      LoadCall(read, calls.emplace_back());
    }
    return S_OK;
  });
}

HRESULT CallLog::Count(std::int64_t& count) {
  return Guarded("CallLog::Count", [&] { return CountCalls(store(), count); });
}

HRESULT CallLog::Delete(std::int64_t id, bool& found) {
  static constexpr char kSql[] = "DELETE FROM calls WHERE id = ?1";
  store().PrepareToDelete();
  return Change("CallLog::Delete", [&] { return store().Change(kSql, kStep, found, id); });
}

HRESULT CallLog::Clear() {
  static constexpr char kSql[] = "DELETE FROM calls";
  store().PrepareToDelete();
  return Change("CallLog::Clear", [&] { return store().Run(kSql, kStep); });
}

}  // namespace ce::host
