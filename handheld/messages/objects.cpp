#include "handheld/messages/objects.h"

#include "handheld/base/guarded.h"
#include "handheld/messages/properties.h"

namespace ce::host {

HRESULT FindEntry(Store& store, const char* sql, const ENTRYID* entryId, DWORD entryIdBytes,
                  std::int64_t owner, std::int64_t& id) {
  if (!entryId || entryIdBytes == 0) return MAPI_E_INVALID_ENTRYID;
  Statement find;
  if (const HRESULT status = store.Prepare(sql, find); Failed(status)) return status;
  find.BindBlob(1, entryId, entryIdBytes);
  find.BindInteger(2, owner);
  bool row = false;
  if (const HRESULT status = find.Step("sqlite3_step:read", row); Failed(status)) return status;
  if (!row) return MAPI_E_NOT_FOUND;
  id = find.Integer(0);
  return S_OK;
}

HRESULT GetObjectProps(const char* call, MessageSession& session, const PropertyQuery& query,
                       std::int64_t id, const SPropTagArray* tags, DWORD* count,
                       SPropValue** values) {
  if (!count || !values) return E_POINTER;
  *count = 0;
  *values = nullptr;
  return Guarded(call, [&] {
    if (!tags || !tags->aulPropTag || tags->cValues == 0) return E_INVALIDARG;
    Store* store = nullptr;
    if (const HRESULT status = session.Reading(store); Failed(status)) return status;
    return ReadProperties(*store, query, id, *tags, count, values);
  });
}

}  // namespace ce::host
