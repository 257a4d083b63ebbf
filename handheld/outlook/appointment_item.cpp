#include "handheld/outlook/appointment_item.h"

#include <utility>

#include "handheld/outlook/appointment_base.h"
#include "handheld/outlook/exceptions.h"
#include "handheld/outlook/item_clock.h"
#include "handheld/outlook/item_list.h"
#include "handheld/outlook/occurrence_item.h"
#include "handheld/outlook/series_item.h"
#include "handheld/store/exception_row.h"

namespace ce::host {
namespace {

using std::chrono::days;
using std::chrono::seconds;

class AppointmentItem final : public AppointmentBase, public SeriesItem {
 public:
  AppointmentItem(SessionPtr session, std::weak_ptr<ItemList> list, std::uint32_t oid,
                  AppointmentRow row)
      : AppointmentBase(std::move(session), std::move(row.fields)),
        SeriesItem(row.series),
        list_(std::move(list)),
        oid_(oid) {}

  HRESULT get_Oid(LONG* oid) override {
    return GetValue("IAppointment::get_Oid", static_cast<LONG>(oid_), oid);
  }
  HRESULT get_IsRecurring(VARIANT_BOOL* value) override {
    return GetBool("IAppointment::get_IsRecurring", recurring(), value);
  }
  HRESULT GetRecurrencePattern(IRecurrencePattern** pattern) override {
    if (!pattern) return E_POINTER;
    *pattern = nullptr;
    return Guarded("IAppointment::GetRecurrencePattern",
                   [&] { return HandOutPattern(this, pattern); });
  }
  HRESULT ClearRecurrencePattern() override {
    return Guarded("IAppointment::ClearRecurrencePattern", [&] {
      ClearSeries();
      return S_OK;
    });
  }
  HRESULT Save() override;
  HRESULT Delete() override;

  void NoteChange() override { SetChanged(true); }
  local_days SeriesDay() const override { return FirstDay(fields(), series()); }
  bool MoveSeries(local_days day) override;
  seconds SeriesStartTime() const override { return TimeOfDay(fields().start); }
  seconds SeriesEndTime() const override { return TimeOfDay(fields().end); }
  LONG SeriesDuration() const override { return fields().duration; }
  bool SetSeriesStartTime(seconds time) override;
  bool SetSeriesEndTime(seconds time) override;
  bool SetSeriesDuration(LONG minutes) override { return SetDuration(fields(), minutes); }
  HRESULT OpenExceptions(IExceptions** exceptions) override;
  HRESULT OpenOccurrence(DATE date, IAppointment** occurrence) override;

 private:
  ~AppointmentItem() override = default;

  HRESULT StoreNew(Store& store, const std::optional<Series>& saved);
  HRESULT StoreChanges(Store& store, const std::optional<Series>& saved);

  const std::weak_ptr<ItemList> list_;
  std::uint32_t oid_;  // 0 until it is saved
};

bool AppointmentItem::MoveSeries(local_days day) {
  if (fields().start != kNoDate) {
    return SetStart(fields(), OleDate(day + SeriesStartTime()));
  }
  series()->startDay = day;
  return true;
}

// Without a Start there is no day whose time it could be.
bool AppointmentItem::SetSeriesStartTime(seconds time) {
  const auto day = DayOfDate(fields().start);
  return day ? SetStart(fields(), OleDate(*day + time)) : time.count() == 0;
}

// The End stays on its day, unless it would lie before the Start there.
bool AppointmentItem::SetSeriesEndTime(seconds time) {
  const auto start = TimeOfDate(fields().start);
  const auto day = DayOfDate(fields().end);
  if (!day) return time.count() == 0;
  local_seconds end = *day + time;
  if (start && end < *start) end += days{1};
  return SetEnd(fields(), OleDate(end));
}

HRESULT AppointmentItem::OpenExceptions(IExceptions** exceptions) {
  Store* store = session()->store();
  if (!store) return E_FAIL;
  return MakeExceptions(session(), oid_, exceptions);
}

HRESULT AppointmentItem::OpenOccurrence(DATE date, IAppointment** occurrence) {
  return LoadOccurrence(session(), oid_, date, occurrence);
}

HRESULT AppointmentItem::Save() {
  return Guarded("IAppointment::Save", [&] {
    Store* store = session()->store();
    if (!store) return E_FAIL;
    std::optional<Series> saved;
    if (!SeriesToSave(saved)) return E_INVALIDARG;
    const HRESULT status = oid_ == 0 ? StoreNew(*store, saved) : StoreChanges(*store, saved);
    if (Succeeded(status)) {
      SetChanged(false);
      SeriesSaved(saved);
    }
    return status;
  });
}

HRESULT AppointmentItem::StoreNew(Store& store, const std::optional<Series>& saved) {
  std::uint32_t oid = 0;
  const HRESULT status =
      store.Write(nullptr, [&] { return InsertAppointment(store, fields(), saved, oid); });
  if (Succeeded(status)) oid_ = oid;
  return status;
}

HRESULT AppointmentItem::StoreChanges(Store& store, const std::optional<Series>& saved) {
  bool found = false;
  const auto write = [&] {
    const HRESULT status = UpdateAppointment(store, oid_, fields(), saved, found);
    if (Failed(status)) return status;
    if (!saved || wasCleared()) return DropExceptions(store, oid_);
    return PruneExceptions(store, oid_, *saved, SeriesDay());
  };
  const HRESULT status =
      changed() ? store.Write(nullptr, write) : AppointmentExists(store, oid_, found);
  return Succeeded(status) && !found ? E_INVALIDARG : status;
}

HRESULT AppointmentItem::Delete() {
  return Guarded("IAppointment::Delete", [&] {
    Store* store = session()->store();
    if (!store) return E_FAIL;
    return DeleteStored(*store, list_, olAppointmentItem, oid_);
  });
}

}  // namespace

HRESULT MakeAppointment(const SessionPtr& session, IDispatch** item) {
  const auto now = ItemClock();
  if (!now) return E_FAIL;
  AppointmentRow row;
  AppointmentFields& fields = row.fields;
  fields.start = OleDate(std::chrono::floor<std::chrono::hours>(*now) + std::chrono::hours{1});
  fields.end = fields.start;
  if (!SetDuration(fields, 60)) return E_FAIL;
  fields.busyStatus = olBusy;
  fields.sensitivity = olNormal;
  fields.reminderSet = session->limits().reminderSet;
  fields.reminderMinutes = session->limits().reminderMinutes;
  *item = new AppointmentItem(session, {}, 0, std::move(row));
  return S_OK;
}

HRESULT LoadAppointment(const SessionPtr& session, const std::shared_ptr<ItemList>& list,
                        std::uint32_t oid, IDispatch** item) {
  AppointmentRow row;
  bool found = false;
  const HRESULT status = ReadAppointment(*session->store(), oid, row, found);
  if (Failed(status)) return status;
  // Another connection was quicker: what is left to delete is handed out without content.
  if (!found && !(list && list->HasDeleted())) return E_INVALIDARG;
  *item = new AppointmentItem(session, list, oid, std::move(row));
  return S_OK;
}

}  // namespace ce::host
