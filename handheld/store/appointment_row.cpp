#include "handheld/store/appointment_row.h"

#include <string>

#include "handheld/store/oid_counter.h"
#include "handheld/store/sql_columns.h"

namespace ce::host {
namespace {

// The series' columns follow the fields'; parameter 1 is always the identifier.
constexpr int kFirstParameter = 2;

std::string Columns(ColumnForm form) {
  std::vector<const char*> columns = AppointmentFieldColumns();
  for (const char* column : SeriesColumns()) columns.push_back(column);
  return ColumnList(form, columns, kFirstParameter);
}

void Bind(Statement& statement, std::uint32_t oid, const AppointmentFields& fields,
          const std::optional<Series>& series) {
  statement.BindInteger(1, oid);
  BindAppointmentFields(statement, kFirstParameter, fields);
  BindSeries(statement, kFirstParameter + kAppointmentFieldCount, series);
}

}  // namespace

local_days FirstDay(const AppointmentFields& fields, const std::optional<Series>& series) {
  if (const auto start = DayOfDate(fields.start)) return *start;
  return series ? series->startDay : kFirstItemDay;
}

bool HasDay(const AppointmentRow& row, local_days day) {
  return row.series && HasDay(*row.series, FirstDay(row.fields, row.series), day);
}

std::vector<const char*> AppointmentFieldColumns() {
  std::vector<const char*> columns = {
      "Start",      "End",         "Duration",    "AllDayEvent",
      "BusyStatus", "Sensitivity", "ReminderSet", "ReminderMinutesBeforeStart",
      "BodyInk"};
  for (const TextRow& row : kAppointmentTexts) columns.push_back(row.name);
  return columns;
}

void BindAppointmentFields(Statement& statement, int firstParameter,
                           const AppointmentFields& fields) {
  int parameter = firstParameter;
  statement.BindReal(parameter++, fields.start);
  statement.BindReal(parameter++, fields.end);
  for (const LONG value : {fields.duration, LONG{fields.allDayEvent}, fields.busyStatus,
                           fields.sensitivity, LONG{fields.reminderSet}, fields.reminderMinutes}) {
    statement.BindInteger(parameter++, value);
  }
  statement.BindInk(parameter++, fields.ink);
  for (std::size_t i = 0; i < kAppointmentTextCount; ++i) {
    statement.BindText(parameter++, fields.texts.View(i));
  }
}

void LoadAppointmentFields(const Statement& statement, int firstColumn, AppointmentFields& fields) {
  int column = firstColumn;
  const auto next = [&] { return static_cast<LONG>(statement.Integer(column++)); };
  fields.start = statement.Real(column++);
  fields.end = statement.Real(column++);
  fields.duration = next();
  fields.allDayEvent = next() != 0;
  fields.busyStatus = next();
  fields.sensitivity = next();
  fields.reminderSet = next() != 0;
  fields.reminderMinutes = next();
  const auto [ink, inkBytes] = statement.Blob(column++);
  fields.ink.assign(ink, ink + inkBytes);
  for (std::size_t i = 0; i < kAppointmentTextCount; ++i) {
    const std::string_view stored = statement.Text(column++);
    if (!stored.empty()) fields.texts.SetStored(i, stored);
  }
}

HRESULT ReadAppointment(Store& store, std::uint32_t oid, AppointmentRow& row, bool& found) {
  static const std::string kSql =
      "SELECT " + Columns(ColumnForm::kNames) + " FROM appointments WHERE oid = ?1";
  found = false;
  Statement select;
  if (const HRESULT status = store.Prepare(kSql.c_str(), select); Failed(status)) return status;
  select.BindInteger(1, oid);
  const HRESULT status = select.Step("sqlite3_step:read", found);
  if (found) {
    LoadAppointmentFields(select, 0, row.fields);
    LoadSeries(select, kAppointmentFieldCount, row.series);
  }
  return status;
}

HRESULT InsertAppointment(Store& store, const AppointmentFields& fields,
                          const std::optional<Series>& series, std::uint32_t& oid) {
  static const std::string kSql = "INSERT INTO appointments (oid, " + Columns(ColumnForm::kNames) +
                                  ") VALUES (?1, " + Columns(ColumnForm::kPlaceholders) + ")";
  if (const HRESULT status = TakeOid(store, oid); Failed(status)) return status;
  Statement insert;
  if (const HRESULT status = store.Prepare(kSql.c_str(), insert); Failed(status)) return status;
  Bind(insert, oid, fields, series);
  return insert.Run("sqlite3_step:write");
}

HRESULT UpdateAppointment(Store& store, std::uint32_t oid, const AppointmentFields& fields,
                          const std::optional<Series>& series, bool& found) {
  static const std::string kSql =
      "UPDATE appointments SET " + Columns(ColumnForm::kAssignments) + " WHERE oid = ?1";
  found = false;
  Statement update;
  if (const HRESULT status = store.Prepare(kSql.c_str(), update); Failed(status)) return status;
  Bind(update, oid, fields, series);
  const HRESULT status = update.Run("sqlite3_step:write");
  found = Succeeded(status) && store.Changes() > 0;
  return status;
}

HRESULT AppointmentExists(Store& store, std::uint32_t oid, bool& found) {
  static constexpr char kSql[] = "SELECT 1 FROM appointments WHERE oid = ?1";
  Statement select;
  if (const HRESULT status = store.Prepare(kSql, select); Failed(status)) return status;
  select.BindInteger(1, oid);
  return select.Step("sqlite3_step:read", found);
}

}  // namespace ce::host
