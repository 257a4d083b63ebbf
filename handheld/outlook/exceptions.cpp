#include "handheld/outlook/exceptions.h"

#include <memory>
#include <utility>
#include <vector>

#include "handheld/base/com_object.h"
#include "handheld/outlook/item_property.h"
#include "handheld/outlook/occurrence_item.h"
#include "handheld/store/exception_row.h"

namespace ce::host {
namespace {

// What a collection and its exceptions share.
struct Snapshot {
  SessionPtr session;
  std::uint32_t oid = 0;
  std::vector<ExceptionRow> rows;
  std::chrono::seconds timeOfDay{};
};
using SnapshotPtr = std::shared_ptr<const Snapshot>;

class Exception final : public ComObject<IException> {
 public:
  Exception(SnapshotPtr snapshot, std::size_t index)
      : snapshot_(std::move(snapshot)), row_(snapshot_->rows[index]) {}

  HRESULT get_AppointmentItem(IAppointment** item) override {
    if (!item) return E_POINTER;
    *item = nullptr;
    return Guarded("IException::get_AppointmentItem", [&] {
      if (row_.deleted) return S_FALSE;
      *item = MakeOccurrence(snapshot_->session, snapshot_->oid, row_.originalDay, row_.fields);
      return S_OK;
    });
  }
  HRESULT get_OriginalDate(DATE* date) override {
    return GetValue("IException::get_OriginalDate",
                    OleDate(row_.originalDay + snapshot_->timeOfDay), date, kNoDate);
  }
  HRESULT get_Deleted(VARIANT_BOOL* deleted) override {
    return GetBool("IException::get_Deleted", row_.deleted, deleted);
  }

 private:
  ~Exception() override = default;

  const SnapshotPtr snapshot_;
  const ExceptionRow& row_;
};

class OccurrenceList final : public ComObject<IExceptions> {
 public:
  explicit OccurrenceList(SnapshotPtr snapshot) : snapshot_(std::move(snapshot)) {}

  HRESULT Item(INT index, IException** exception) override {
    if (!exception) return E_POINTER;
    *exception = nullptr;
    return Guarded("IExceptions::Item", [&] {
      if (index < 1 || static_cast<std::size_t>(index) > snapshot_->rows.size()) {
        return E_INVALIDARG;
      }
      *exception = new Exception(snapshot_, static_cast<std::size_t>(index) - 1);
      return S_OK;
    });
  }
  HRESULT get_Count(INT* count) override {
    return GetValue("IExceptions::get_Count", static_cast<INT>(snapshot_->rows.size()), count);
  }

 private:
  ~OccurrenceList() override = default;

  const SnapshotPtr snapshot_;
};

IExceptions* MakeList(SnapshotPtr snapshot) {
  return new OccurrenceList(std::move(snapshot));
}

}  // namespace

HRESULT MakeExceptions(const SessionPtr& session, std::uint32_t oid, IExceptions** exceptions) {
  Store* store = session->store();
  if (!store) return E_FAIL;
  auto snapshot = std::make_shared<Snapshot>();
  snapshot->session = session;
  snapshot->oid = oid;
  if (oid != 0) {
    const HRESULT status = ReadExceptions(*store, oid, snapshot->rows, snapshot->timeOfDay);
    if (Failed(status)) return status;
  }
  *exceptions = MakeList(std::move(snapshot));
  return S_OK;
}

IExceptions* MakeNoExceptions() {
  return MakeList(std::make_shared<Snapshot>());
}

}  // namespace ce::host
