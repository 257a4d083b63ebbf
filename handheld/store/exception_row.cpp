#include "handheld/store/exception_row.h"

#include <string>

namespace ce::host {
namespace {

// Behind the appointment's identifier and the original day.
ColumnNames OwnColumns() {
  ColumnNames columns = FieldColumns<AppointmentFields>();
  columns.insert(columns.begin(), "Deleted");
  return columns;
}

// Nothing for a number that no item's day has.
std::optional<local_days> DayOfNumber(std::int64_t number) {
  if (number < DayNumber(kFirstItemDay) || number > DayNumber(kLastItemDay)) return std::nullopt;
  return kOleEpoch + std::chrono::days{number};
}

void LoadException(const Statement& statement, int firstColumn, ExceptionRow& row) {
  statement.Load(firstColumn, row.deleted);
  LoadFields(statement, firstColumn + 1, row.fields);
}

}  // namespace

HRESULT ReadExceptions(Store& store, std::uint32_t oid, std::vector<ExceptionRow>& rows,
                       std::chrono::seconds& timeOfDay) {
  static const std::string kSql =
      "SELECT (SELECT Start FROM appointments WHERE oid = ?1), OriginalDay, " +
      ColumnList(ColumnForm::kNames, OwnColumns(), 1) +
      " FROM exceptions WHERE oid = ?1 ORDER BY OriginalDay";
  rows.clear();
  timeOfDay = {};
  Statement select;
  RETURN_IF_FAILED(store.Prepare(kSql.c_str(), select, oid));
  return select.ForEachRow(kReadRow, [&] {
    timeOfDay = TimeOfDay(select.Real(0));
    const auto day = DayOfNumber(select.Integer(1));
    if (!day) return;
    ExceptionRow& row = rows.emplace_back();
    row.originalDay = *day;
    LoadException(select, 2, row);
  });
}

HRESULT ReadException(Store& store, std::uint32_t oid, local_days day, ExceptionRow& row,
                      bool& found) {
  static const std::string kSql = "SELECT " + ColumnList(ColumnForm::kNames, OwnColumns(), 1) +
                                  " FROM exceptions WHERE oid = ?1 AND OriginalDay = ?2";
  Statement select;
  RETURN_IF_FAILED(store.Find(kSql.c_str(), kReadRow, select, found, oid, DayNumber(day)));
  if (!found) return S_OK;
  row.originalDay = day;
  LoadException(select, 0, row);
  return S_OK;
}

HRESULT WriteException(Store& store, std::uint32_t oid, const ExceptionRow& row) {
  static const std::string kSql = [] {
    ColumnNames columns = OwnColumns();
    columns.insert(columns.begin(), {"oid", "OriginalDay"});
    return InsertSql("INSERT OR REPLACE INTO exceptions", columns);
  }();
  Statement write;
  RETURN_IF_FAILED(
      store.Prepare(kSql.c_str(), write, oid, DayNumber(row.originalDay), row.deleted));
  BindFields(write, 4, row.fields);
  return write.Run(kWriteRow);
}

HRESULT DropExceptions(Store& store, std::uint32_t oid) {
  static constexpr char kSql[] = "DELETE FROM exceptions WHERE oid = ?1";
  return store.Run(kSql, kWriteRow, oid);
}

HRESULT PruneExceptions(Store& store, std::uint32_t oid, const Series& series, local_days start) {
  static constexpr char kList[] = "SELECT OriginalDay FROM exceptions WHERE oid = ?1";
  static constexpr char kDrop[] = "DELETE FROM exceptions WHERE oid = ?1 AND OriginalDay = ?2";
  std::vector<std::int64_t> days;
  {
    Statement list;
    RETURN_IF_FAILED(store.Prepare(kList, list, oid));
    RETURN_IF_FAILED(list.ForEachRow(kReadRow, [&] { days.push_back(list.Integer(0)); }));
  }
  for (const std::int64_t number : days) {
    const auto day = DayOfNumber(number);
    if (day && HasDay(series, start, *day)) continue;
    RETURN_IF_FAILED(store.Run(kDrop, kWriteRow, oid, number));
  }
  return S_OK;
}

}  // namespace ce::host
