// What the database answers, as statuses and as words.
#pragma once

#include <string>

#include "platform/types.h"

namespace ce::host {

inline constexpr HRESULT kStoreMissing = static_cast<HRESULT>(0x80070002);
inline constexpr HRESULT kStoreCannotOpen = static_cast<HRESULT>(0x8007006E);
inline constexpr HRESULT kStoreDiskFull = static_cast<HRESULT>(0x80070070);
inline constexpr HRESULT kStoreBusy = static_cast<HRESULT>(0x800700AA);
inline constexpr HRESULT kStoreReadFault = static_cast<HRESULT>(0x8007001E);
inline constexpr HRESULT kStoreWriteFault = static_cast<HRESULT>(0x8007001D);
inline constexpr HRESULT kStoreNewerFormat = static_cast<HRESULT>(0x8007051A);
inline constexpr HRESULT kStoreDamaged = static_cast<HRESULT>(0x80070570);
// Every identifier has been given away.
inline constexpr HRESULT kStoreNoMoreOids = static_cast<HRESULT>(0x80070103);

// The status for an SQLite result code, plain or extended; S_OK for SQLITE_OK, ROW and DONE.
[[nodiscard]] HRESULT StoreStatus(int sqliteCode);

// What is wrong with the store when a call answers `status`, as the end of a sentence that begins
// with the file's name ("is damaged").
std::string StoreStatusText(HRESULT status);

}  // namespace ce::host
