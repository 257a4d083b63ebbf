#include "handheld/store/exception_row.h"

#include <string>
#include <utility>

#include "handheld/store/sql_columns.h"

namespace ce::host {
namespace {

// Parameter 1 is the appointment's identifier, 2 the original day; the others follow.
constexpr int kFirstParameter = 3;

std::string Columns(ColumnForm form) {
  std::vector<const char*> columns = {"Deleted"};
  for (const char* column : AppointmentFieldColumns()) columns.push_back(column);
  return ColumnList(form, columns, kFirstParameter);
}

// Nothing for a number that no item's day has.
std::optional<local_days> DayOfNumber(std::int64_t number) {
  if (number < DayNumber(kFirstItemDay) || number > DayNumber(kLastItemDay)) return std::nullopt;
  return kOleEpoch + std::chrono::days{number};
}

void LoadException(const Statement& statement, int firstColumn, ExceptionRow& row) {
  row.deleted = statement.Integer(firstColumn) != 0;
  LoadAppointmentFields(statement, firstColumn + 1, row.fields);
}

HRESULT ReadDays(Store& store, std::uint32_t oid, std::vector<std::int64_t>& days) {
  static constexpr char kSql[] = "SELECT OriginalDay FROM exceptions WHERE oid = ?1";
  Statement select;
  if (const HRESULT status = store.Prepare(kSql, select); Failed(status)) return status;
  select.BindInteger(1, oid);
  for (;;) {
    bool found = false;
    const HRESULT status = select.Step("sqlite3_step:read", found);
    if (Failed(status) || !found) return status;
    days.push_back(select.Integer(0));
  }
}

HRESULT DropDay(Store& store, std::uint32_t oid, std::int64_t day) {
  static constexpr char kSql[] = "DELETE FROM exceptions WHERE oid = ?1 AND OriginalDay = ?2";
  Statement remove;
  if (const HRESULT status = store.Prepare(kSql, remove); Failed(status)) return status;
  remove.BindInteger(1, oid);
  remove.BindInteger(2, day);
  return remove.Run("sqlite3_step:write");
}

}  // namespace

HRESULT ReadExceptions(Store& store, std::uint32_t oid, std::vector<ExceptionRow>& rows,
                       std::chrono::seconds& timeOfDay) {
  static const std::string kSql =
      "SELECT (SELECT Start FROM appointments WHERE oid = ?1), OriginalDay, " +
      Columns(ColumnForm::kNames) + " FROM exceptions WHERE oid = ?1 ORDER BY OriginalDay";
  rows.clear();
  timeOfDay = {};
  Statement select;
  if (const HRESULT status = store.Prepare(kSql.c_str(), select); Failed(status)) return status;
  select.BindInteger(1, oid);
  for (;;) {
    bool found = false;
    const HRESULT status = select.Step("sqlite3_step:read", found);
    if (Failed(status) || !found) return status;
    timeOfDay = TimeOfDay(select.Real(0));
    const auto day = DayOfNumber(select.Integer(1));
    if (!day) continue;
    ExceptionRow& row = rows.emplace_back();
    row.originalDay = *day;
    LoadException(select, 2, row);
  }
}

HRESULT ReadException(Store& store, std::uint32_t oid, local_days day, ExceptionRow& row,
                      bool& found) {
  static const std::string kSql = "SELECT " + Columns(ColumnForm::kNames) +
                                  " FROM exceptions WHERE oid = ?1 AND OriginalDay = ?2";
  found = false;
  Statement select;
  if (const HRESULT status = store.Prepare(kSql.c_str(), select); Failed(status)) return status;
  select.BindInteger(1, oid);
  select.BindInteger(2, DayNumber(day));
  const HRESULT status = select.Step("sqlite3_step:read", found);
  if (found) {
    row.originalDay = day;
    LoadException(select, 0, row);
  }
  return status;
}

HRESULT WriteException(Store& store, std::uint32_t oid, const ExceptionRow& row) {
  static const std::string kSql = "INSERT OR REPLACE INTO exceptions (oid, OriginalDay, " +
                                  Columns(ColumnForm::kNames) + ") VALUES (?1, ?2, " +
                                  Columns(ColumnForm::kPlaceholders) + ")";
  Statement write;
  if (const HRESULT status = store.Prepare(kSql.c_str(), write); Failed(status)) return status;
  write.BindInteger(1, oid);
  write.BindInteger(2, DayNumber(row.originalDay));
  write.BindInteger(kFirstParameter, row.deleted);
  BindAppointmentFields(write, kFirstParameter + 1, row.fields);
  return write.Run("sqlite3_step:write");
}

HRESULT DropExceptions(Store& store, std::uint32_t oid) {
  static constexpr char kSql[] = "DELETE FROM exceptions WHERE oid = ?1";
  Statement remove;
  if (const HRESULT status = store.Prepare(kSql, remove); Failed(status)) return status;
  remove.BindInteger(1, oid);
  return remove.Run("sqlite3_step:write");
}

HRESULT PruneExceptions(Store& store, std::uint32_t oid, const Series& series, local_days start) {
  std::vector<std::int64_t> days;
  if (const HRESULT status = ReadDays(store, oid, days); Failed(status)) return status;
  for (const std::int64_t number : days) {
    const auto day = DayOfNumber(number);
    if (day && HasDay(series, start, *day)) continue;
    if (const HRESULT status = DropDay(store, oid, number); Failed(status)) return status;
  }
  return S_OK;
}

}  // namespace ce::host
