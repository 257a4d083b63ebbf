#include "handheld/outlook/import_ledger.h"

#include <cstdint>

#include "handheld/base/guarded.h"
#include "handheld/outlook/outlook_app.h"

namespace ce::host {
namespace {

constexpr char kRead[] = "sqlite3_step:read";
constexpr char kWrite[] = "sqlite3_step:write";

// The columns oid and content.
ImportLedger::Entry EntryAt(const Statement& row, int column) {
  return {static_cast<LONG>(static_cast<std::uint32_t>(row.Integer(column))),
          std::string(row.Text(column + 1))};
}

}  // namespace

HRESULT ImportLedger::Open(IPOutlookApp* app) {
  return SessionOf(app, session_);
}

HRESULT ImportLedger::Find(INT itemType, std::string_view identity,
                           std::optional<Entry>& entry) const {
  static constexpr char kSql[] =
      "SELECT oid, content FROM import_ledger WHERE kind = ?1 AND identity = ?2";
  entry.reset();
  return Guarded("ImportLedger::Find", [&] {
    if (!store()) return E_FAIL;
    Statement find;
    bool row = false;
    const HRESULT status = store()->Find(kSql, kRead, find, row, itemType, identity);
    if (row) entry = EntryAt(find, 0);
    return status;
  });
}

HRESULT ImportLedger::List(INT itemType,
                           std::vector<std::pair<std::string, Entry>>& entries) const {
  static constexpr char kSql[] = "SELECT identity, oid, content FROM import_ledger WHERE kind = ?1";
  entries.clear();
  return Guarded("ImportLedger::List", [&]() -> HRESULT {
    if (!store()) return E_FAIL;
    Statement list;
    RETURN_IF_FAILED(store()->Prepare(kSql, list, itemType));
    return list.ForEachRow(kRead, [&] { entries.emplace_back(list.Text(0), EntryAt(list, 1)); });
  });
}

HRESULT ImportLedger::Remember(INT itemType, std::string_view identity, const Entry& entry) {
  static constexpr char kSql[] =
      "INSERT OR REPLACE INTO import_ledger (kind, identity, oid, content)"
      " VALUES (?1, ?2, ?3, ?4)";
  return Guarded("ImportLedger::Remember", [&] {
    if (!store()) return E_FAIL;
    return store()->Write(nullptr, [&] {
      return store()->Run(kSql, kWrite, itemType, identity, static_cast<std::uint32_t>(entry.oid),
                          entry.content);
    });
  });
}

HRESULT ImportLedger::Forget(INT itemType, std::string_view identity) {
  static constexpr char kSql[] = "DELETE FROM import_ledger WHERE kind = ?1 AND identity = ?2";
  return Guarded("ImportLedger::Forget", [&] {
    if (!store()) return E_FAIL;
    return store()->Write(nullptr, [&] { return store()->Run(kSql, kWrite, itemType, identity); });
  });
}

}  // namespace ce::host
