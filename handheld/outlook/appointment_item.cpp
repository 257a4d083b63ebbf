#include "handheld/outlook/appointment_base.h"
#include "handheld/outlook/occurrences.h"
#include "handheld/store/exception_row.h"

namespace ce::host {
namespace {

class AppointmentItem final : public RecurringItem<AppointmentBase> {
 public:
  AppointmentItem(SessionPtr session, std::weak_ptr<ItemList> list, std::uint32_t oid,
                  AppointmentRow row)
      : RecurringItem(std::move(session), std::move(list), oid, std::move(row)) {}

  bool MoveSeries(local_days day) override;
  HRESULT OpenExceptions(IExceptions** exceptions) override {
    return MakeExceptions(session_, oid(), exceptions);
  }
  HRESULT OpenOccurrence(DATE date, IAppointment** occurrence) override {
    return LoadOccurrence(session_, oid(), date, occurrence);
  }

 private:
  ~AppointmentItem() override = default;

  HRESULT RowChanged(Store& store, const std::optional<Series>& saved) override {
    if (!saved || wasCleared()) return DropExceptions(store, oid());
    return PruneExceptions(store, oid(), *saved, SeriesDay());
  }
};

bool AppointmentItem::MoveSeries(local_days day) {
  if (fields_.start != kNoDate) return SetStart(fields_, OleDate(day + TimeOfDay(fields_.start)));
  series()->startDay = day;
  return true;
}

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

}  // namespace

const ItemKind kAppointments{olFolderCalendar, &ListItems<AppointmentFields>,
                             &DeleteItem<AppointmentFields>, &MakeAppointment,
                             &LoadItem<AppointmentItem>};

}  // namespace ce::host
