// OLE automation: owned strings, variants, byte arrays and dates.
#pragma once

#include "platform/com.h"
#include "platform/types.h"

namespace ce {

// A counted, zero-terminated UTF-16 string, freed with SysFreeString. Null is the empty string.
using BSTR = char16_t*;

BSTR SysAllocString(const WCHAR* text);  // null for null, and when memory runs out
BSTR SysAllocStringLen(const WCHAR* text, UINT characters);  // `text` null: content undefined
void SysFreeString(BSTR text);
UINT SysStringLen(BSTR text);  // characters without the terminator; 0 for null

using VARIANT_BOOL = std::int16_t;
inline constexpr VARIANT_BOOL VARIANT_TRUE = -1;
inline constexpr VARIANT_BOOL VARIANT_FALSE = 0;

using VARTYPE = WORD;
inline constexpr VARTYPE VT_EMPTY = 0;
inline constexpr VARTYPE VT_NULL = 1;
inline constexpr VARTYPE VT_BSTR = 8;
inline constexpr VARTYPE VT_ERROR = 10;
inline constexpr VARTYPE VT_UNKNOWN = 13;
inline constexpr VARTYPE VT_UI1 = 17;
inline constexpr VARTYPE VT_ARRAY = 0x2000;

struct SAFEARRAY;  // one dimension, lower bound 0

struct VARIANT {
  VARTYPE vt = VT_EMPTY;
  union {
    BSTR bstrVal = nullptr;
    IUnknown* punkVal;
    SAFEARRAY* parray;
    HRESULT scode;
  };
};

void VariantInit(VARIANT* variant);
// Frees what the variant owns (string, array, one reference) and makes it VT_EMPTY.
HRESULT VariantClear(VARIANT* variant);

// Null when memory runs out. Only VT_UI1 elements.
SAFEARRAY* SafeArrayCreateVector(VARTYPE type, LONG lowerBound, DWORD elements);
HRESULT SafeArrayAccessData(SAFEARRAY* array, void** data);
HRESULT SafeArrayUnaccessData(SAFEARRAY* array);
HRESULT SafeArrayDestroy(SAFEARRAY* array);
// Elements; 0 for null.
DWORD SafeArrayGetCount(const SAFEARRAY* array);

// Days since 1899-12-30, the time of day as the fraction (of a negative date: counted away from
// zero, so -1.25 is 1899-12-29 06:00).
using DATE = double;
inline constexpr DATE kNoDate = 949998.0;  // 4501-01-01: Pocket Outlook's "no date"

// Nonzero on success. To SYSTEMTIME: years 100 to 9999, rounded to the nearest second, milliseconds
// 0. From SYSTEMTIME: milliseconds and day of week are ignored; an impossible date or time fails
// with ERROR_INVALID_PARAMETER; years 0 to 29 are 2000s, 30 to 99 are 1900s.
INT VariantTimeToSystemTime(DATE date, SYSTEMTIME* time);
INT SystemTimeToVariantTime(const SYSTEMTIME* time, DATE* date);

}  // namespace ce
