#include "handheld/store/oid_counter.h"

#include "handheld/store/store_error.h"
#include "handheld/store/store_schema.h"

namespace ce::host {

HRESULT TakeOid(Store& store, std::uint32_t& oid) {
  static constexpr char kSql[] =
      "UPDATE oid_counter SET next_oid = next_oid + 1"
      " WHERE next_oid BETWEEN 1 AND 4294967295 RETURNING next_oid - 1";
  static_assert(kLastOid == 4294967295);
  Statement take;
  if (const HRESULT status = store.Prepare(kSql, take); Failed(status)) return status;
  bool row = false;
  if (const HRESULT status = take.Step("sqlite3_step:write", row); Failed(status)) return status;
  if (!row) return kStoreNoMoreOids;
  oid = static_cast<std::uint32_t>(take.Integer(0));
  return take.Run("sqlite3_step:write");
}

HRESULT StartOidsAt(Store& store, DWORD first) {
  static constexpr char kSql[] = "UPDATE oid_counter SET next_oid = ?1 WHERE next_oid <= ?1";
  if (first == 0) return E_INVALIDARG;
  return store.Write(nullptr, [&]() -> HRESULT {
    Statement start;
    if (const HRESULT status = store.Prepare(kSql, start); Failed(status)) return status;
    start.BindInteger(1, first);
    if (const HRESULT status = start.Run("sqlite3_step:write"); Failed(status)) return status;
    return store.Changes() == 0 ? E_INVALIDARG : S_OK;
  });
}

}  // namespace ce::host
