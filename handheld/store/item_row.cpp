#include "handheld/store/item_row.h"

#include <string>

#include "handheld/store/store_error.h"
#include "handheld/store/store_schema.h"

namespace ce::host {
namespace {

constexpr std::size_t kOrdinaryText = 20;  // bytes

// Behind the identifier, which is always parameter 1.
template <typename Fields>
ColumnNames ItemColumns() {
  ColumnNames names = FieldColumns<Fields>();
  if (ItemTable<Fields>::kRecurs) {
    names.insert(names.end(), kSeriesColumns.begin(), kSeriesColumns.end());
  }
  return names;
}

template <typename Fields>
HRESULT PrepareWrite(Store& store, const std::string& sql, Statement& write, std::uint32_t oid,
                     const Fields& fields, const std::optional<Series>& series) {
  RETURN_IF_FAILED(store.Prepare(sql.c_str(), write, oid));
  const int parameter = BindFields(write, 2, fields);
  if (ItemTable<Fields>::kRecurs) BindSeries(write, parameter, series);
  return S_OK;
}

template <typename Fields>
void LoadRow(const Statement& select, int firstColumn, ItemRow<Fields>& row) {
  const int column = LoadFields(select, firstColumn, row.fields);
  if (ItemTable<Fields>::kRecurs) LoadSeries(select, column, row.series);
}

template <typename Fields>
std::string Named(const char* before, const char* behind) {
  return std::string(before) + ItemTable<Fields>::kName + behind;
}

}  // namespace

bool HasDay(const AppointmentRow& row, local_days day) {
  return row.series && HasDay(*row.series, FirstDay(row.fields, row.series), day);
}

template <typename Fields>
ColumnNames FieldColumns() {
  ColumnNames names;
  AppendNames(names, ItemTable<Fields>::kColumns);
  AppendNames(names, ItemTable<Fields>::kTexts);
  return names;
}

template <typename Fields>
int BindFields(Statement& statement, int parameter, const Fields& fields) {
  using Table = ItemTable<Fields>;
  parameter = BindColumns<Fields>(statement, parameter, Table::kColumns, fields);
  for (std::size_t i = 0; i < Table::kTexts.size(); ++i, ++parameter) {
    // It alone can be without a value.
    if (Table::kTexts[i].kind == TextKind::kFileAs && !fields.texts.IsSet(i)) {
      statement.BindNull(parameter);
    } else {
      statement.Bind(parameter, fields.texts.View(i));
    }
  }
  return parameter;
}

template <typename Fields>
int LoadFields(const Statement& statement, int column, Fields& fields) {
  using Table = ItemTable<Fields>;
  column = LoadColumns<Fields>(statement, column, Table::kColumns, fields);
  fields.texts.Reserve(kOrdinaryText * Table::kTexts.size());
  for (std::size_t i = 0; i < Table::kTexts.size(); ++i, ++column) {
    const std::string_view stored = statement.Text(column);
    const bool isEmpty = Table::kTexts[i].kind != TextKind::kFileAs || statement.IsNull(column);
    if (!stored.empty() || !isEmpty) fields.texts.SetStored(i, stored);
  }
  return column;
}

template <typename Fields>
HRESULT ListItems(Store& store, std::vector<std::uint32_t>& oids) {
  static const std::string kSql = Named<Fields>("SELECT oid FROM ", " ORDER BY oid");
  Statement list;
  RETURN_IF_FAILED(store.Prepare(kSql.c_str(), list));
  return list.ForEachRow("sqlite3_step:list",
                         [&] { oids.push_back(static_cast<std::uint32_t>(list.Integer(0))); });
}

template <typename Fields>
HRESULT ReadItem(Store& store, std::uint32_t oid, ItemRow<Fields>& row, bool& found) {
  static const std::string kSql = "SELECT " +
                                  ColumnList(ColumnForm::kNames, ItemColumns<Fields>(), 1) +
                                  Named<Fields>(" FROM ", " WHERE oid = ?1");
  Statement select;
  RETURN_IF_FAILED(store.Find(kSql.c_str(), kReadRow, select, found, oid));
  if (found) LoadRow(select, 0, row);
  return S_OK;
}

template <typename Fields>
HRESULT ScanItem(Store& store, RowScan& scan, std::uint32_t oid, ItemRow<Fields>& row,
                 bool& found) {
  static const std::string kSql = "SELECT oid, " +
                                  ColumnList(ColumnForm::kNames, ItemColumns<Fields>(), 1) +
                                  Named<Fields>(" FROM ", " WHERE oid >= ?1 ORDER BY oid");
  if (store.snapshot() == 0) return ReadItem(store, oid, row, found);
  for (bool begun = false; !begun;) {
    begun = !scan.GoesOn(store);
    if (begun) RETURN_IF_FAILED(scan.Begin(store, kSql.c_str(), oid));
    RETURN_IF_FAILED(scan.Next(kReadRow, found));
    found = found && scan.row().Integer(0) == oid;
    if (found) {
      LoadRow(scan.row(), 1, row);
      return S_OK;
    }
    if (!begun) scan.End();
  }
  return S_OK;
}

template <typename Fields>
HRESULT ItemExists(Store& store, std::uint32_t oid, bool& found) {
  static const std::string kSql = Named<Fields>("SELECT 1 FROM ", " WHERE oid = ?1");
  Statement select;
  return store.Find(kSql.c_str(), kReadRow, select, found, oid);
}

template <typename Fields>
HRESULT InsertItem(Store& store, const Fields& fields, const std::optional<Series>& series,
                   std::uint32_t& oid) {
  static const std::string kSql = [] {
    ColumnNames columns = ItemColumns<Fields>();
    columns.insert(columns.begin(), "oid");
    return InsertSql(Named<Fields>("INSERT INTO ", "").c_str(), columns);
  }();
  RETURN_IF_FAILED(TakeOid(store, oid));
  Statement insert;
  RETURN_IF_FAILED(PrepareWrite(store, kSql, insert, oid, fields, series));
  return insert.Run(kWriteRow);
}

template <typename Fields>
HRESULT UpdateItem(Store& store, std::uint32_t oid, const Fields& fields,
                   const std::optional<Series>& series, bool& found) {
  static const std::string kSql = Named<Fields>("UPDATE ", " SET ") +
                                  ColumnList(ColumnForm::kAssignments, ItemColumns<Fields>(), 2) +
                                  " WHERE oid = ?1";
  found = false;
  Statement update;
  RETURN_IF_FAILED(PrepareWrite(store, kSql, update, oid, fields, series));
  RETURN_IF_FAILED(update.Run(kWriteRow));
  found = store.Changes() > 0;
  return S_OK;
}

template <typename Fields>
HRESULT DeleteItem(Store& store, std::uint32_t oid) {
  static const std::string kSql = Named<Fields>("DELETE FROM ", " WHERE oid = ?1");
  return store.Run(kSql.c_str(), kWriteRow, oid);
}

#define CE_ITEM_ROWS(Fields)                                                                      \
  template ColumnNames FieldColumns<Fields>();                                                    \
  template int BindFields(Statement&, int, const Fields&);                                        \
  template int LoadFields(const Statement&, int, Fields&);                                        \
  template HRESULT ListItems<Fields>(Store&, std::vector<std::uint32_t>&);                        \
  template HRESULT ReadItem(Store&, std::uint32_t, ItemRow<Fields>&, bool&);                      \
  template HRESULT ScanItem(Store&, RowScan&, std::uint32_t, ItemRow<Fields>&, bool&);            \
  template HRESULT ItemExists<Fields>(Store&, std::uint32_t, bool&);                              \
  template HRESULT InsertItem(Store&, const Fields&, const std::optional<Series>&,                \
                              std::uint32_t&);                                                    \
  template HRESULT UpdateItem(Store&, std::uint32_t, const Fields&, const std::optional<Series>&, \
                              bool&);                                                             \
  template HRESULT DeleteItem<Fields>(Store&, std::uint32_t);
CE_ITEM_ROWS(ContactFields)
CE_ITEM_ROWS(AppointmentFields)
CE_ITEM_ROWS(TaskFields)

HRESULT TakeOid(Store& store, std::uint32_t& oid) {
  static constexpr char kSql[] =
      "UPDATE oid_counter SET next_oid = next_oid + 1"
      " WHERE next_oid BETWEEN 1 AND 4294967295 RETURNING next_oid - 1";
  static_assert(kLastOid == 4294967295);
  Statement take;
  bool row = false;
  RETURN_IF_FAILED(store.Find(kSql, kWriteRow, take, row));
  if (!row) return kStoreNoMoreOids;
  take.Load(0, oid);
  return take.Run(kWriteRow);
}

HRESULT StartOidsAt(Store& store, DWORD first) {
  static constexpr char kSql[] = "UPDATE oid_counter SET next_oid = ?1 WHERE next_oid <= ?1";
  if (first == 0) return E_INVALIDARG;
  return store.Write(nullptr, [&]() -> HRESULT {
    bool changed = false;
    RETURN_IF_FAILED(store.Change(kSql, kWriteRow, changed, first));
    return changed ? S_OK : E_INVALIDARG;
  });
}

}  // namespace ce::host
