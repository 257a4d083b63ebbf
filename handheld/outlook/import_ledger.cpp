#include "handheld/outlook/import_ledger.h"

#include <cstdint>

#include "handheld/base/guarded.h"
#include "handheld/outlook/outlook_app.h"

namespace ce::host {

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
    if (const HRESULT status = store()->Prepare(kSql, find); Failed(status)) return status;
    find.BindInteger(1, itemType);
    find.BindText(2, identity);
    bool row = false;
    const HRESULT status = find.Step("sqlite3_step:read", row);
    if (row) {
      entry = Entry{static_cast<LONG>(static_cast<std::uint32_t>(find.Integer(0))),
                    std::string(find.Text(1))};
    }
    return status;
  });
}

HRESULT ImportLedger::List(INT itemType,
                           std::vector<std::pair<std::string, Entry>>& entries) const {
  static constexpr char kSql[] = "SELECT identity, oid, content FROM import_ledger WHERE kind = ?1";
  entries.clear();
  return Guarded("ImportLedger::List", [&] {
    if (!store()) return E_FAIL;
    Statement list;
    if (const HRESULT status = store()->Prepare(kSql, list); Failed(status)) return status;
    list.BindInteger(1, itemType);
    for (;;) {
      bool row = false;
      const HRESULT status = list.Step("sqlite3_step:read", row);
      if (Failed(status) || !row) return status;
      entries.emplace_back(list.Text(0),
                           Entry{static_cast<LONG>(static_cast<std::uint32_t>(list.Integer(1))),
                                 std::string(list.Text(2))});
    }
  });
}

HRESULT ImportLedger::Remember(INT itemType, std::string_view identity, const Entry& entry) {
  static constexpr char kSql[] =
      "INSERT OR REPLACE INTO import_ledger (kind, identity, oid, content)"
      " VALUES (?1, ?2, ?3, ?4)";
  return Guarded("ImportLedger::Remember", [&] {
    if (!store()) return E_FAIL;
    return store()->Write(nullptr, [&] {
      Statement remember;
      if (const HRESULT status = store()->Prepare(kSql, remember); Failed(status)) return status;
      remember.BindInteger(1, itemType);
      remember.BindText(2, identity);
      remember.BindInteger(3, static_cast<std::uint32_t>(entry.oid));
      remember.BindText(4, entry.content);
      return remember.Run("sqlite3_step:write");
    });
  });
}

HRESULT ImportLedger::Forget(INT itemType, std::string_view identity) {
  static constexpr char kSql[] = "DELETE FROM import_ledger WHERE kind = ?1 AND identity = ?2";
  return Guarded("ImportLedger::Forget", [&] {
    if (!store()) return E_FAIL;
    return store()->Write(nullptr, [&] {
      Statement forget;
      if (const HRESULT status = store()->Prepare(kSql, forget); Failed(status)) return status;
      forget.BindInteger(1, itemType);
      forget.BindText(2, identity);
      return forget.Run("sqlite3_step:write");
    });
  });
}

}  // namespace ce::host
