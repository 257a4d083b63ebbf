#include "handheld/store/task_row.h"

#include <string>

#include "handheld/store/oid_counter.h"
#include "handheld/store/sql_columns.h"

namespace ce::host {
namespace {

// Parameter 1 is always the identifier.
constexpr int kFirstParameter = 2;

std::string Columns(ColumnForm form) {
  std::vector<const char*> columns = {"StartDate",    "DueDate",     "DateCompleted",
                                      "ReminderTime", "Importance",  "Complete",
                                      "Sensitivity",  "ReminderSet", "BodyInk"};
  for (const TextRow& row : kTaskTexts) columns.push_back(row.name);
  for (const char* column : SeriesColumns()) columns.push_back(column);
  return ColumnList(form, columns, kFirstParameter);
}

void Bind(Statement& statement, std::uint32_t oid, const TaskFields& fields,
          const std::optional<Series>& series) {
  statement.BindInteger(1, oid);
  int parameter = kFirstParameter;
  for (const DATE date :
       {fields.startDate, fields.dueDate, fields.dateCompleted, fields.reminderTime}) {
    statement.BindReal(parameter++, date);
  }
  for (const LONG value :
       {fields.importance, LONG{fields.complete}, fields.sensitivity, LONG{fields.reminderSet}}) {
    statement.BindInteger(parameter++, value);
  }
  statement.BindInk(parameter++, fields.ink);
  for (std::size_t i = 0; i < kTaskTextCount; ++i) {
    statement.BindText(parameter++, fields.texts.View(i));
  }
  BindSeries(statement, parameter, series);
}

void Load(const Statement& statement, TaskRow& row) {
  TaskFields& fields = row.fields;
  int column = 0;
  for (DATE* date :
       {&fields.startDate, &fields.dueDate, &fields.dateCompleted, &fields.reminderTime}) {
    *date = statement.Real(column++);
  }
  const auto next = [&] { return static_cast<LONG>(statement.Integer(column++)); };
  fields.importance = next();
  fields.complete = next() != 0;
  fields.sensitivity = next();
  fields.reminderSet = next() != 0;
  const auto [ink, inkBytes] = statement.Blob(column++);
  fields.ink.assign(ink, ink + inkBytes);
  for (std::size_t i = 0; i < kTaskTextCount; ++i) {
    const std::string_view stored = statement.Text(column++);
    if (!stored.empty()) fields.texts.SetStored(i, stored);
  }
  LoadSeries(statement, column, row.series);
}

}  // namespace

local_days FirstDay(const TaskFields& fields, const std::optional<Series>& series) {
  if (const auto start = DayOfDate(fields.startDate)) return *start;
  if (const auto due = DayOfDate(fields.dueDate)) return *due;
  return series ? series->startDay : kFirstItemDay;
}

HRESULT ReadTask(Store& store, std::uint32_t oid, TaskRow& row, bool& found) {
  static const std::string kSql =
      "SELECT " + Columns(ColumnForm::kNames) + " FROM tasks WHERE oid = ?1";
  found = false;
  Statement select;
  if (const HRESULT status = store.Prepare(kSql.c_str(), select); Failed(status)) return status;
  select.BindInteger(1, oid);
  const HRESULT status = select.Step("sqlite3_step:read", found);
  if (found) Load(select, row);
  return status;
}

HRESULT InsertTask(Store& store, const TaskFields& fields, const std::optional<Series>& series,
                   std::uint32_t& oid) {
  static const std::string kSql = "INSERT INTO tasks (oid, " + Columns(ColumnForm::kNames) +
                                  ") VALUES (?1, " + Columns(ColumnForm::kPlaceholders) + ")";
  if (const HRESULT status = TakeOid(store, oid); Failed(status)) return status;
  Statement insert;
  if (const HRESULT status = store.Prepare(kSql.c_str(), insert); Failed(status)) return status;
  Bind(insert, oid, fields, series);
  return insert.Run("sqlite3_step:write");
}

HRESULT UpdateTask(Store& store, std::uint32_t oid, const TaskFields& fields,
                   const std::optional<Series>& series, bool& found) {
  static const std::string kSql =
      "UPDATE tasks SET " + Columns(ColumnForm::kAssignments) + " WHERE oid = ?1";
  found = false;
  Statement update;
  if (const HRESULT status = store.Prepare(kSql.c_str(), update); Failed(status)) return status;
  Bind(update, oid, fields, series);
  const HRESULT status = update.Run("sqlite3_step:write");
  found = Succeeded(status) && store.Changes() > 0;
  return status;
}

HRESULT TaskExists(Store& store, std::uint32_t oid, bool& found) {
  static constexpr char kSql[] = "SELECT 1 FROM tasks WHERE oid = ?1";
  Statement select;
  if (const HRESULT status = store.Prepare(kSql, select); Failed(status)) return status;
  select.BindInteger(1, oid);
  return select.Step("sqlite3_step:read", found);
}

}  // namespace ce::host
