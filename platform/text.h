// Text conversions and the system's date and time pictures.
#pragma once

#include "platform/types.h"

namespace ce {

inline constexpr UINT CP_ACP = 0;  // the handheld's 8-bit code page, which follows its language
inline constexpr UINT CP_UTF8 = 65001;

// `characters` -1: zero-terminated, the terminator included in the count. `bytes` 0 asks for the
// size needed. 0 and the last error on failure. Characters outside the code page become '?'.
INT WideCharToMultiByte(UINT codePage, DWORD flags, const WCHAR* text, INT characters, char* out,
                        INT bytes, const char* defaultChar, BOOL* usedDefault);
INT MultiByteToWideChar(UINT codePage, DWORD flags, const char* text, INT bytes, WCHAR* out,
                        INT characters);

// Pictures: yyyy MM dd HH mm ss, text between apostrophes as it stands. Return the number of
// characters with the terminator; an impossible date or time gives 0 and ERROR_INVALID_PARAMETER,
// a short buffer 0 and ERROR_INSUFFICIENT_BUFFER. Every date that a DATE can hold is written.
INT GetDateFormatW(DWORD locale, DWORD flags, const SYSTEMTIME* date, const WCHAR* picture,
                   WCHAR* out, INT characters);
INT GetTimeFormatW(DWORD locale, DWORD flags, const SYSTEMTIME* time, const WCHAR* picture,
                   WCHAR* out, INT characters);

}  // namespace ce
