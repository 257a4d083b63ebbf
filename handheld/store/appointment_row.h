// An appointment as the store has it, and the statements that read and write it.
#pragma once

#include <cstdint>
#include <optional>
#include <vector>

#include "handheld/store/item_texts.h"
#include "handheld/store/ole_date.h"
#include "handheld/store/series.h"
#include "handheld/store/store.h"

namespace ce::host {

// X(property, kind)
#define CE_APPOINTMENT_TEXTS(X) \
  X(Subject, kSubject)          \
  X(Location, kCalendar)        \
  X(Categories, kCalendar)      \
  X(Body, kBody)

enum class AppointmentText {
#define CE_APPOINTMENT_TEXT(Name, Kind) k##Name,
  CE_APPOINTMENT_TEXTS(CE_APPOINTMENT_TEXT)
#undef CE_APPOINTMENT_TEXT
};

inline constexpr TextRow kAppointmentTexts[] = {
#define CE_APPOINTMENT_TEXT(Name, Kind) {#Name, TextKind::Kind},
    CE_APPOINTMENT_TEXTS(CE_APPOINTMENT_TEXT)
#undef CE_APPOINTMENT_TEXT
};
inline constexpr std::size_t kAppointmentTextCount = std::size(kAppointmentTexts);

// What an appointment has, and what a changed occurrence of a series has of its own.
struct AppointmentFields {
  // Start, End and Duration are coupled as IAppointment has it; dates are whole seconds.
  DATE start = kNoDate;
  DATE end = kNoDate;
  LONG duration = 0;  // minutes
  bool allDayEvent = false;
  LONG busyStatus = 0;
  LONG sensitivity = 0;
  bool reminderSet = false;
  LONG reminderMinutes = 0;
  ItemTexts<AppointmentText, kAppointmentTextCount> texts;
  std::vector<BYTE> ink;  // empty for none
};

struct AppointmentRow {
  AppointmentFields fields;
  std::optional<Series> series;
};

// The first day of its pattern: that of the Start, else the series' own.
local_days FirstDay(const AppointmentFields& fields, const std::optional<Series>& series);
// Whether a day is one of its series; false for a single appointment.
bool HasDay(const AppointmentRow& row, local_days day);

// The columns that appointments and changed occurrences share.
std::vector<const char*> AppointmentFieldColumns();
inline constexpr int kAppointmentFieldCount = 9 + static_cast<int>(kAppointmentTextCount);
void BindAppointmentFields(Statement& statement, int firstParameter,
                           const AppointmentFields& fields);
void LoadAppointmentFields(const Statement& statement, int firstColumn, AppointmentFields& fields);

// `found` false, and success, when there is no such appointment.
[[nodiscard]] HRESULT ReadAppointment(Store& store, std::uint32_t oid, AppointmentRow& row,
                                      bool& found);
// Stores a new appointment under a new identifier. Within a write.
[[nodiscard]] HRESULT InsertAppointment(Store& store, const AppointmentFields& fields,
                                        const std::optional<Series>& series, std::uint32_t& oid);
// Within a write.
[[nodiscard]] HRESULT UpdateAppointment(Store& store, std::uint32_t oid,
                                        const AppointmentFields& fields,
                                        const std::optional<Series>& series, bool& found);
[[nodiscard]] HRESULT AppointmentExists(Store& store, std::uint32_t oid, bool& found);

}  // namespace ce::host
