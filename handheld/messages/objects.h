// The objects of a MAPI session: message stores, and what they open.
#pragma once

#include <cstdint>

#include "handheld/messages/message_session.h"
#include "platform/mapi.h"

namespace ce::host {

// The object starts with the caller's reference.
IMsgStore* MakeMsgStore(const MessageSessionPtr& session, std::int64_t store);

// The number of the row that `sql` finds for an entry identifier (?1) and an owner (?2);
// MAPI_E_NOT_FOUND without one, MAPI_E_INVALID_ENTRYID for one of no bytes.
[[nodiscard]] HRESULT FindEntry(Store& store, const char* sql, const ENTRYID* entryId,
                                DWORD entryIdBytes, std::int64_t owner, std::int64_t& id);

}  // namespace ce::host
