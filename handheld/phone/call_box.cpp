#include "handheld/phone/call_box.h"

#include <limits>
#include <utility>

#include "common/text/unicode.h"
#include "handheld/base/guarded.h"

namespace ce::host {
namespace {

constexpr char kStep[] = "sqlite3_step:calls";

// The columns behind the identifier, bound from parameter 1 on, as long as this lives.
class BoundCall {
 public:
  BoundCall(Statement& statement, const StoredCall& call) : statement_(statement) {
    statement.BindInteger(1, call.startTime);
    statement.BindInteger(2, call.endTime);
    statement.BindInteger(3, call.kind);
    statement.BindInteger(4, call.flags);
    statement.BindInteger(5, call.callerIdType);
    Bind(6, call.number, number_);
    Bind(7, call.name, name_);
    Bind(8, call.nameType, nameType_);
    Bind(9, call.note, note_);
  }
  BoundCall(const BoundCall&) = delete;
  BoundCall& operator=(const BoundCall&) = delete;

 private:
  void Bind(int parameter, const std::optional<std::u16string>& text, std::string& stored) {
    if (!text) return statement_.BindNull(parameter);
    text::AppendWtf8(stored, *text);
    statement_.BindText(parameter, stored);
  }

  Statement& statement_;
  std::string number_, name_, nameType_, note_;
};

}  // namespace

CallBox::Batch::Batch() : WriteGroup(std::numeric_limits<int>::max()) {}

HRESULT CallBox::Open(Handheld& handheld, std::unique_ptr<CallBox>& box, std::string& problem) {
  box.reset();
  return Guarded("CallBox::Open", [&] {
    std::unique_ptr<Store> store;
    const HRESULT status = Store::Open(handheld, store, problem);
    if (Succeeded(status)) box.reset(new CallBox(std::move(store)));
    return status;
  });
}

CallBox::~CallBox() {
  Abandon();
}

void CallBox::Begin() {
  batchStatus_ = S_OK;
  store_->SetBulk(&batch_);
}

HRESULT CallBox::Commit() {
  HRESULT status = std::exchange(batchStatus_, S_OK);
  if (Succeeded(status)) {
    status = Guarded("CallBox::Commit", [&] { return store_->CommitPending(); });
  }
  Abandon();
  return status;
}

void CallBox::Abandon() {
  if (store_->bulk()) store_->AbandonPending();
  store_->SetBulk(nullptr);
  batchStatus_ = S_OK;
}

template <typename Work>
HRESULT CallBox::Change(const char* call, Work&& work) {
  if (Failed(batchStatus_)) return batchStatus_;
  const HRESULT status =
      Guarded(call, [&] { return store_->Write(nullptr, std::forward<Work>(work)); });
  if (Failed(status) && store_->bulk()) {
    store_->AbandonPending();
    batchStatus_ = status;
  }
  return status;
}

HRESULT CallBox::Insert(const StoredCall& call, std::int64_t* id) {
  static constexpr char kSql[] =
      "INSERT INTO calls"
      " (start_time, end_time, kind, flags, caller_id_type, number, name, name_type, note)"
      " VALUES (?1, ?2, ?3, ?4, ?5, ?6, ?7, ?8, ?9) RETURNING id";
  return Change("CallBox::Insert", [&]() -> HRESULT {
    Statement insert;
    if (const HRESULT status = store_->Prepare(kSql, insert); Failed(status)) return status;
    const BoundCall bound(insert, call);
    bool row = false;
    if (const HRESULT status = insert.Step(kStep, row); Failed(status)) return status;
    if (!row) return E_FAIL;
    if (id) *id = insert.Integer(0);
    return insert.Run(kStep);
  });
}

HRESULT CallBox::Contains(const StoredCall& call, bool& found) {
  static constexpr char kSql[] =
      "SELECT 1 FROM calls WHERE start_time = ?1 AND end_time = ?2 AND kind = ?3 AND flags = ?4"
      " AND caller_id_type = ?5 AND number IS ?6 AND name IS ?7 AND name_type IS ?8"
      " AND note IS ?9 LIMIT 1";
  return Guarded("CallBox::Contains", [&] {
    Statement find;
    if (const HRESULT status = store_->Prepare(kSql, find); Failed(status)) return status;
    const BoundCall bound(find, call);
    return find.Step(kStep, found);
  });
}

HRESULT CallBox::Read(const CallPosition& after, std::size_t limit,
                      std::vector<NumberedCall>& calls) {
  calls.clear();
  return Guarded("CallBox::Read", [&]() -> HRESULT {
    CallPosition position = after;
    while (calls.size() < limit) {
      NumberedCall call;
      bool found = false;
      const HRESULT status = ReadCallBehind(*store_, position, call, found);
      if (Failed(status) || !found) return status;
      position = call.position();
      calls.push_back(std::move(call));
    }
    return S_OK;
  });
}

HRESULT CallBox::Count(std::int64_t& count) {
  return Guarded("CallBox::Count", [&] { return CountCalls(*store_, count); });
}

HRESULT CallBox::Delete(std::int64_t id, bool& found) {
  static constexpr char kSql[] = "DELETE FROM calls WHERE id = ?1";
  return Change("CallBox::Delete", [&]() -> HRESULT {
    Statement remove;
    if (const HRESULT status = store_->Prepare(kSql, remove); Failed(status)) return status;
    remove.BindInteger(1, id);
    const HRESULT status = remove.Run(kStep);
    found = Succeeded(status) && store_->Changes() > 0;
    return status;
  });
}

HRESULT CallBox::Clear() {
  static constexpr char kSql[] = "DELETE FROM calls";
  return Change("CallBox::Clear", [&] {
    Statement remove;
    if (const HRESULT status = store_->Prepare(kSql, remove); Failed(status)) return status;
    return remove.Run(kStep);
  });
}

}  // namespace ce::host
