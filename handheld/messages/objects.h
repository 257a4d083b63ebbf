// The makers of the session's objects. Each answers an object with one reference.
#pragma once

#include <cstdint>

#include "handheld/messages/message_session.h"
#include "platform/mapi.h"

namespace ce::host {

IMsgStore* MakeMsgStore(const MessageSessionPtr& session, std::int64_t store);
IMAPIFolder* MakeFolderObject(const MessageSessionPtr& session, std::int64_t folder);
IMessage* MakeMessageObject(const MessageSessionPtr& session, std::int64_t message);

// The number of the row that `sql` finds for an entry identifier (?1) and an owner (?2);
// MAPI_E_NOT_FOUND without one, MAPI_E_INVALID_ENTRYID for one of no bytes.
[[nodiscard]] HRESULT FindEntry(Store& store, const char* sql, const ENTRYID* entryId,
                                DWORD entryIdBytes, std::int64_t owner, std::int64_t& id);

// What every GetProps does around its query: the frame, the arguments, the session.
struct PropertyQuery;
[[nodiscard]] HRESULT GetObjectProps(const char* call, MessageSession& session,
                                     const PropertyQuery& query, std::int64_t id,
                                     const SPropTagArray* tags, DWORD* count, SPropValue** values);

}  // namespace ce::host
