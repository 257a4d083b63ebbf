#include "handheld/outlook/occurrence_item.h"

#include <utility>

#include "handheld/outlook/appointment_base.h"

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
    return GetBool("IAppointment::get_IsRecurring", false, value);
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
      ExceptionRow row{originalDay_, false, fields()};
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
  Store* store = session()->store();
  if (!store) return E_FAIL;
  const HRESULT status = store->Write(nullptr, [&] {
    const HRESULT valid = CheckDay(*store, row.deleted);
    return Failed(valid) ? valid : WriteException(*store, oid_, row);
  });
  if (Succeeded(status)) SetChanged(false);
  return status;
}

HRESULT OccurrenceItem::CheckDay(Store& store, bool deleting) const {
  AppointmentRow series;
  bool found = false;
  if (const HRESULT status = ReadAppointment(store, oid_, series, found); Failed(status)) {
    return status;
  }
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

}  // namespace

HRESULT LoadOccurrence(const SessionPtr& session, std::uint32_t oid, DATE date,
                       IAppointment** occurrence) {
  Store* store = session->store();
  if (!store) return E_FAIL;
  const auto time = TimeOfDate(date);
  if (!time) return E_INVALIDARG;
  AppointmentRow row;
  bool found = false;
  HRESULT status = ReadAppointment(*store, oid, row, found);
  if (Failed(status)) return status;
  const auto day = std::chrono::floor<std::chrono::days>(*time);
  if (!found || *time - day != TimeOfDay(row.fields.start) || !HasDay(row, day)) {
    return E_INVALIDARG;
  }
  ExceptionRow exception;
  status = ReadException(*store, oid, day, exception, found);
  if (Failed(status)) return status;
  if (found && exception.deleted) return E_INVALIDARG;
  if (!found) MoveTo(row.fields, *time);
  *occurrence =
      new OccurrenceItem(session, oid, day, std::move(found ? exception.fields : row.fields));
  return S_OK;
}

IAppointment* MakeOccurrence(const SessionPtr& session, std::uint32_t oid, local_days originalDay,
                             const AppointmentFields& fields) {
  return new OccurrenceItem(session, oid, originalDay, fields);
}

}  // namespace ce::host
