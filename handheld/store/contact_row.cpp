#include "handheld/store/contact_row.h"

#include "handheld/store/oid_counter.h"
#include "handheld/store/sql_columns.h"

namespace ce::host {
namespace {

// Before the texts, which follow in their order.
constexpr int kFixedColumns = 3;

// Parameter 1 is always the identifier.
std::string Columns(ColumnForm form) {
  std::vector<const char*> columns = {"Birthday", "Anniversary", "BodyInk"};
  for (const TextRow& row : kContactTexts) columns.push_back(row.name);
  return ColumnList(form, columns, 2);
}

void BindContact(Statement& statement, std::uint32_t oid, const ContactRow& row) {
  statement.BindInteger(1, oid);
  statement.BindReal(2, row.birthday);
  statement.BindReal(3, row.anniversary);
  statement.BindInk(4, row.ink);
  for (std::size_t i = 0; i < kContactTextCount; ++i) {
    const int parameter = 2 + kFixedColumns + static_cast<int>(i);
    if (kContactTexts[i].kind == TextKind::kFileAs && !row.fileAsSet) {
      statement.BindNull(parameter);
    } else {
      statement.BindText(parameter, row.texts.View(i));
    }
  }
}

void LoadContact(const Statement& statement, ContactRow& row) {
  row.birthday = statement.Real(0);
  row.anniversary = statement.Real(1);
  const auto [ink, inkBytes] = statement.Blob(2);
  row.ink.assign(ink, ink + inkBytes);
  row.texts.Reserve(1024);
  for (std::size_t i = 0; i < kContactTextCount; ++i) {
    const int column = kFixedColumns + static_cast<int>(i);
    const std::string_view stored = statement.Text(column);
    if (!stored.empty()) row.texts.SetStored(i, stored);
    if (kContactTexts[i].kind == TextKind::kFileAs) row.fileAsSet = !statement.IsNull(column);
  }
}

}  // namespace

HRESULT ReadContact(Store& store, std::uint32_t oid, ContactRow& row, bool& found) {
  static const std::string kSql =
      "SELECT " + Columns(ColumnForm::kNames) + " FROM contacts WHERE oid = ?1";
  found = false;
  Statement select;
  if (const HRESULT status = store.Prepare(kSql.c_str(), select); Failed(status)) return status;
  select.BindInteger(1, oid);
  const HRESULT status = select.Step("sqlite3_step:read", found);
  if (found) LoadContact(select, row);
  return status;
}

HRESULT InsertContact(Store& store, const ContactRow& row, std::uint32_t& oid) {
  static const std::string kSql = "INSERT INTO contacts (oid, " + Columns(ColumnForm::kNames) +
                                  ") VALUES (?1, " + Columns(ColumnForm::kPlaceholders) + ")";
  if (const HRESULT status = TakeOid(store, oid); Failed(status)) return status;
  Statement insert;
  if (const HRESULT status = store.Prepare(kSql.c_str(), insert); Failed(status)) return status;
  BindContact(insert, oid, row);
  return insert.Run("sqlite3_step:write");
}

HRESULT UpdateContact(Store& store, std::uint32_t oid, const ContactRow& row, bool& found) {
  static const std::string kSql =
      "UPDATE contacts SET " + Columns(ColumnForm::kAssignments) + " WHERE oid = ?1";
  Statement update;
  if (const HRESULT status = store.Prepare(kSql.c_str(), update); Failed(status)) return status;
  BindContact(update, oid, row);
  const HRESULT status = update.Run("sqlite3_step:write");
  found = Succeeded(status) && store.Changes() > 0;
  return status;
}

HRESULT ContactExists(Store& store, std::uint32_t oid, bool& found) {
  static constexpr char kSql[] = "SELECT 1 FROM contacts WHERE oid = ?1";
  Statement select;
  if (const HRESULT status = store.Prepare(kSql, select); Failed(status)) return status;
  select.BindInteger(1, oid);
  return select.Step("sqlite3_step:read", found);
}

}  // namespace ce::host
