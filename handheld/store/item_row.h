// Items as the store has them, and the statements that read and write them.
//
// `Fields` is ContactFields, AppointmentFields or TaskFields.
#pragma once

#include <cstdint>
#include <optional>
#include <vector>

#include "handheld/store/item_tables.h"
#include "handheld/store/row_scan.h"

namespace ce::host {

// What the steps of statements on items are called where calls are counted and failed.
inline constexpr char kReadRow[] = "sqlite3_step:read";
inline constexpr char kWriteRow[] = "sqlite3_step:write";

template <typename Fields>
struct ItemRow {
  Fields fields;
  std::optional<Series> series;  // of an item that recurs
};
using ContactRow = ItemRow<ContactFields>;
using AppointmentRow = ItemRow<AppointmentFields>;
using TaskRow = ItemRow<TaskFields>;

// Whether a day is one of its series; false for a single appointment.
bool HasDay(const AppointmentRow& row, local_days day);

// The identifiers of all items of a kind, ascending, which is the order of creation.
template <typename Fields>
[[nodiscard]] HRESULT ListItems(Store& store, std::vector<std::uint32_t>& oids);
// `found` false, and success, when there is no such item.
template <typename Fields>
[[nodiscard]] HRESULT ReadItem(Store& store, std::uint32_t oid, ItemRow<Fields>& row, bool& found);
// The same, quick for whoever asks for one item after the other: `scan` goes from each to the next
// while the store holds a snapshot.
template <typename Fields>
[[nodiscard]] HRESULT ScanItem(Store& store, RowScan& scan, std::uint32_t oid, ItemRow<Fields>& row,
                               bool& found);
template <typename Fields>
[[nodiscard]] HRESULT ItemExists(Store& store, std::uint32_t oid, bool& found);
// Stores a new item under a new identifier. Within a write.
template <typename Fields>
[[nodiscard]] HRESULT InsertItem(Store& store, const Fields& fields,
                                 const std::optional<Series>& series, std::uint32_t& oid);
// Within a write.
template <typename Fields>
[[nodiscard]] HRESULT UpdateItem(Store& store, std::uint32_t oid, const Fields& fields,
                                 const std::optional<Series>& series, bool& found);
// Within a write. Succeeds as well when there is no such item. The exceptions of a series go with
// it: the store sees to that.
template <typename Fields>
[[nodiscard]] HRESULT DeleteItem(Store& store, std::uint32_t oid);

// The fields alone, for rows that have columns beside them. Both answer the parameter or column
// behind.
template <typename Fields>
ColumnNames FieldColumns();
template <typename Fields>
int BindFields(Statement& statement, int parameter, const Fields& fields);
template <typename Fields>
int LoadFields(const Statement& statement, int column, Fields& fields);

// Gives an identifier away, which no item of any kind has had. Within a write.
[[nodiscard]] HRESULT TakeOid(Store& store, std::uint32_t& oid);
// New items are numbered from `first` on. E_INVALIDARG for 0, and when that would give out an
// identifier a second time.
[[nodiscard]] HRESULT StartOidsAt(Store& store, DWORD first);

}  // namespace ce::host
