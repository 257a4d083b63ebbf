#include "handheld/outlook/stored_item.h"

#include <algorithm>

#include "common/text/unicode.h"
#include "platform/clock.h"

namespace ce::host {

std::optional<local_seconds> ItemClock() {
  using namespace std::chrono;
  SYSTEMTIME now{};
  GetLocalTime(&now);
  if (now.wMonth == 0) return std::nullopt;
  const local_days day{year{now.wYear} / month{now.wMonth} / std::chrono::day{now.wDay}};
  const local_seconds time = day + hours{now.wHour} + minutes{now.wMinute} + seconds{now.wSecond};
  return std::clamp<local_seconds>(time, kFirstItemDay, kLastItemDay);
}

HRESULT GetStoredText(const char* call, std::string_view stored, BSTR* value) {
  if (!value) return E_POINTER;
  *value = nullptr;
  return Guarded(call, [&] {
    // Most properties are empty.
    const std::size_t length = stored.empty() ? 0 : text::Utf16Length(stored);
    *value = SysAllocStringLen(nullptr, static_cast<UINT>(length));
    if (*value && length > 0) text::DecodeWtf8(stored, *value);
    return *value ? S_OK : E_OUTOFMEMORY;
  });
}

HRESULT GetInk(const char* call, const std::vector<BYTE>& ink, DWORD* bytes, const BYTE** block) {
  if (!bytes || !block) return E_POINTER;
  *bytes = 0;
  *block = nullptr;
  return Guarded(call, [&] {
    if (ink.empty()) return E_NOTIMPL;
    *bytes = static_cast<DWORD>(ink.size());
    *block = ink.data();
    return S_OK;
  });
}

}  // namespace ce::host
