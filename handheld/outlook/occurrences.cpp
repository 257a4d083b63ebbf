#include "handheld/outlook/occurrences.h"

#include <memory>
#include <utility>
#include <vector>

#include "handheld/outlook/appointment_base.h"
#include "handheld/store/exception_row.h"

namespace ce::host {
namespace {

class OccurrenceItem final : public AppointmentBase {
 public:
  OccurrenceItem(SessionPtr session, std::uint32_t oid, local_days originalDay,
                 AppointmentFields fields)
      : AppointmentBase(std::move(session), std::move(fields)),
        oid_(oid),
        originalDay_(originalDay) {}

  HRESULT get_Oid(LONG* oid) override { return GetValue("IAppointment::get_Oid", LONG{0}, oid); }
  HRESULT get_IsRecurring(VARIANT_BOOL* value) override {
    return GetValue("IAppointment::get_IsRecurring", false, value);
  }
  HRESULT GetRecurrencePattern(IRecurrencePattern** pattern) override {
    if (!pattern) return E_POINTER;
    *pattern = nullptr;
    return Guarded("IAppointment::GetRecurrencePattern", [] { return E_NOTIMPL; });
  }
  HRESULT ClearRecurrencePattern() override {
    return Guarded("IAppointment::ClearRecurrencePattern", [] { return E_NOTIMPL; });
  }
  HRESULT Save() override {
    return Guarded("IAppointment::Save", [&] {
      ExceptionRow row{originalDay_, false, fields_};
      return Write(row);
    });
  }
  HRESULT Delete() override {
    return Guarded("IAppointment::Delete", [&] {
      ExceptionRow row{originalDay_, true, {}};
      return Write(row);
    });
  }

 private:
  ~OccurrenceItem() override = default;

  HRESULT Write(const ExceptionRow& row);
  // S_OK when the day still is the series' and, unless it is to be deleted, is not deleted.
  HRESULT CheckDay(Store& store, bool deleting) const;

  const std::uint32_t oid_;  // of the series
  const local_days originalDay_;
};

HRESULT OccurrenceItem::Write(const ExceptionRow& row) {
  Store* store = session_->store();
  if (!store) return E_FAIL;
  const HRESULT status = store->Write(nullptr, [&]() -> HRESULT {
    RETURN_IF_FAILED(CheckDay(*store, row.deleted));
    return WriteException(*store, oid_, row);
  });
  if (Succeeded(status)) changed_ = false;
  return status;
}

HRESULT OccurrenceItem::CheckDay(Store& store, bool deleting) const {
  AppointmentRow series;
  bool found = false;
  RETURN_IF_FAILED(ReadItem(store, oid_, series, found));
  if (!found || !HasDay(series, originalDay_)) return E_INVALIDARG;
  if (deleting) return S_OK;
  ExceptionRow present;
  const HRESULT status = ReadException(store, oid_, originalDay_, present, found);
  return found && present.deleted ? E_INVALIDARG : status;
}

// The series' fields, moved to begin at `start`.
void MoveTo(AppointmentFields& fields, local_seconds start) {
  const local_seconds end = start + LengthOf(fields);
  // An End that is "none" stays so, unless the Start was too: then it follows from the Duration.
  if (fields.end != kNoDate || fields.start == kNoDate) {
    fields.end = IsItemTime(end) ? OleDate(end) : kNoDate;
  }
  fields.start = OleDate(start);
}

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
      *item = new OccurrenceItem(snapshot_->session, snapshot_->oid, row_.originalDay, row_.fields);
      return S_OK;
    });
  }
  HRESULT get_OriginalDate(DATE* date) override {
    return GetValue("IException::get_OriginalDate",
                    OleDate(row_.originalDay + snapshot_->timeOfDay), date);
  }
  HRESULT get_Deleted(VARIANT_BOOL* deleted) override {
    return GetValue("IException::get_Deleted", row_.deleted, deleted);
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

IExceptions* ListOf(SnapshotPtr snapshot) {
  return new OccurrenceList(std::move(snapshot));
}

}  // namespace

HRESULT LoadOccurrence(const SessionPtr& session, std::uint32_t oid, DATE date,
                       IAppointment** occurrence) {
  Store* store = session->store();
  if (!store) return E_FAIL;
  const auto time = TimeOfDate(date);
  if (!time) return E_INVALIDARG;
  AppointmentRow row;
  bool found = false;
  RETURN_IF_FAILED(ReadItem(*store, oid, row, found));
  const auto day = std::chrono::floor<std::chrono::days>(*time);
  if (!found || *time - day != TimeOfDay(row.fields.start) || !HasDay(row, day)) {
    return E_INVALIDARG;
  }
  ExceptionRow exception;
  RETURN_IF_FAILED(ReadException(*store, oid, day, exception, found));
  if (found && exception.deleted) return E_INVALIDARG;
  if (!found) MoveTo(row.fields, *time);
  *occurrence =
      new OccurrenceItem(session, oid, day, std::move(found ? exception.fields : row.fields));
  return S_OK;
}

HRESULT MakeExceptions(const SessionPtr& session, std::uint32_t oid, IExceptions** exceptions) {
  Store* store = session->store();
  if (!store) return E_FAIL;
  auto snapshot = std::make_shared<Snapshot>();
  snapshot->session = session;
  snapshot->oid = oid;
  if (oid != 0) {
    RETURN_IF_FAILED(ReadExceptions(*store, oid, snapshot->rows, snapshot->timeOfDay));
  }
  *exceptions = ListOf(std::move(snapshot));
  return S_OK;
}

IExceptions* MakeNoExceptions() {
  return ListOf(std::make_shared<Snapshot>());
}

}  // namespace ce::host
