// The telephone's call log: the functions of the module "Phone.dll", which are found by name at run
// time. A call log is used by one thread at a time.
#pragma once

#include "platform/types.h"

namespace ce {

// CALLLOGENTRY::iom
inline constexpr DWORD IOM_MISSED = 0;
inline constexpr DWORD IOM_INCOMING = 1;
inline constexpr DWORD IOM_OUTGOING = 2;

// CALLLOGENTRY::dwFlags
inline constexpr DWORD CALLLOG_OUTGOING = 1;
inline constexpr DWORD CALLLOG_CONNECTED = 2;
inline constexpr DWORD CALLLOG_ENDED = 4;  // false: it was dropped
inline constexpr DWORD CALLLOG_ROAM = 8;

// CALLLOGENTRY::cidt
inline constexpr DWORD CALLERIDTYPE_UNAVAILABLE = 0;
inline constexpr DWORD CALLERIDTYPE_BLOCKED = 1;
inline constexpr DWORD CALLERIDTYPE_AVAILABLE = 2;

inline constexpr DWORD CALLLOGSEEK_BEGINNING = 2;

// 48 bytes on the device; here with the host's pointers.
struct CALLLOGENTRY {
  DWORD cbSize = 0;  // set by the caller
  FILETIME ftStartTime{};
  FILETIME ftEndTime{};
  DWORD iom = 0;
  DWORD dwFlags = 0;
  DWORD cidt = 0;
  WCHAR* pszNumber = nullptr;
  WCHAR* pszName = nullptr;
  WCHAR* pszNameType = nullptr;  // "w" work, "h" home, "m" mobile
  WCHAR* pszNote = nullptr;      // the path of a note
};
static_assert(offsetof(CALLLOGENTRY, pszNumber) == 32);
static_assert(sizeof(CALLLOGENTRY) == 32 + 4 * sizeof(WCHAR*));

// "PhoneOpenCallLog". The log is read as it is at the first read of it.
using PhoneOpenCallLogFn = HRESULT (*)(HANDLE* log);
// "PhoneSeekCallLog". The next entry read is the `offset`-th from the newest, counted from 0;
// `record` receives its number, or that of entries when there are not so many.
using PhoneSeekCallLogFn = HRESULT (*)(HANDLE log, DWORD from, DWORD offset, DWORD* record);
// "PhoneGetCallLogEntry". The next older entry; S_FALSE when there are no more. Its strings are
// local memory and the caller's to free; one that the entry lacks is null. A failure hands out none
// and leaves the position.
using PhoneGetCallLogEntryFn = HRESULT (*)(HANDLE log, CALLLOGENTRY* entry);
// "PhoneCloseCallLog".
using PhoneCloseCallLogFn = HRESULT (*)(HANDLE log);

}  // namespace ce
