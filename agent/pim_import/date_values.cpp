#include "agent/pim_import/date_values.h"

#include <array>
#include <iterator>
#include <span>
#include <string_view>

#include "agent/log/log.h"
#include "agent/pim_import/field_values.h"
#include "agent/pim_import/scan.h"
#include "agent/time/zone.h"
#include "platform/com_ptr.h"
#include "platform/status.h"

namespace corvane {

using namespace ce;

namespace {

constexpr ScanField kDateTimePattern[] = {{0, 4}, {0, 2}, {0, 2}, {u'T', 2}, {0, 2}, {0, 2}};
constexpr std::size_t kDateFields = 3;
constexpr std::size_t kDateTimeFields = std::size(kDateTimePattern);

// Reads the first `fields` numbers of the date-time form; answers how many there were.
int ScanTime(std::u16string_view text, std::size_t fields, SYSTEMTIME* time) {
  std::array<LONG, kDateTimeFields> numbers{};
  const int read = ScanNumbers(text, std::span(kDateTimePattern).first(fields), numbers);
  *time = SYSTEMTIME{};
  time->wYear = static_cast<WORD>(numbers[0]);
  time->wMonth = static_cast<WORD>(numbers[1]);
  time->wDay = static_cast<WORD>(numbers[2]);
  time->wHour = static_cast<WORD>(numbers[3]);
  time->wMinute = static_cast<WORD>(numbers[4]);
  time->wSecond = static_cast<WORD>(numbers[5]);
  return read;
}

HRESULT ScanAll(std::u16string_view text, std::size_t fields, SYSTEMTIME* time) {
  const int read = ScanTime(text, fields, time);
  if (read == static_cast<int>(fields)) return S_OK;
  LOG(u"swscanf returned %ld", read);
  return E_INVALIDARG;
}

HRESULT ConversionFailed() {
  const DWORD error = GetLastError();
  LOG(u"SystemTimeToVariantTime hr = %ld", error);
  return static_cast<HRESULT>(error);
}

}  // namespace

bool ScanDate(std::u16string_view text, SYSTEMTIME* date) {
  return ScanTime(text, kDateFields, date) == static_cast<int>(kDateFields);
}

HRESULT ToDate(const SYSTEMTIME& time, DATE* date) {
  DATE converted = 0;
  if (!SystemTimeToVariantTime(&time, &converted)) return ConversionFailed();
  *date = converted;
  return S_OK;
}

HRESULT GetDateFromString(const WCHAR* text, DATE* date) {
  if (!text) {
    LOG(u"GetDateFromString passed NULL pString");
    return E_INVALIDARG;
  }
  SYSTEMTIME time{};
  RETURN_IF_FAILED(ScanAll(text, kDateFields, &time));
  return ToDate(time, date);
}

HRESULT GetChildDate(const ChildElements& parent, const WCHAR* name, DATE* date) {
  Variant text;
  RETURN_IF_FAILED(GetChildValue(parent, name, text.put()));
  return GetDateFromString(text.get().bstrVal, date);
}

HRESULT GetChildDateTime(const ChildElements& parent, const WCHAR* name, DATE* date) {
  Variant text;
  RETURN_IF_FAILED(GetChildValue(parent, name, text.put()));
  SYSTEMTIME utc{};
  RETURN_IF_FAILED(ScanAll(text.text(), kDateTimeFields, &utc));
  // The conversion to local time would turn an impossible time into a possible one.
  FILETIME ticks{};
  if (!SystemTimeToFileTime(&utc, &ticks)) return ConversionFailed();
  return ToDate(UtcToLocalTime(utc), date);
}

}  // namespace corvane
