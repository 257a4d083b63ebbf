#include "platform/text.h"
#include "common/text/code_page.h"
#include "handheld/system/language.h"

#include <algorithm>
#include <limits>
#include <string>
#include <string_view>

#include "handheld/base/guarded.h"

namespace ce {
namespace {

using host::GuardedCode;

constexpr DWORD kErrorOnInvalid = 0x8;  // MB_ERR_INVALID_CHARS

template <typename Character>
DWORD TextOf(const Character* text, INT length, std::basic_string_view<Character>& view) {
  if (!text || length == 0 || length < -1) return ERROR_INVALID_PARAMETER;
  view = length == -1 ? std::basic_string_view<Character>(
                            text, std::char_traits<Character>::length(text) + 1)
                      : std::basic_string_view<Character>(text, static_cast<std::size_t>(length));
  return ERROR_SUCCESS;
}

// Hands the result over, or its size alone when `room` is 0.
template <typename Character>
DWORD Deliver(const std::basic_string<Character>& result, Character* out, INT room, INT& answer) {
  if (result.size() > static_cast<std::size_t>(std::numeric_limits<INT>::max())) {
    return ERROR_INVALID_PARAMETER;
  }
  const auto needed = static_cast<INT>(result.size());
  if (room != 0) {
    if (!out || room < 0) return ERROR_INVALID_PARAMETER;
    if (room < needed) return ERROR_INSUFFICIENT_BUFFER;
    std::copy(result.begin(), result.end(), out);
  }
  answer = needed;
  return ERROR_SUCCESS;
}

INT Answer(DWORD error, INT result) {
  if (error == ERROR_SUCCESS) return result;
  SetLastError(error);
  return 0;
}

UINT PageOf(UINT codePage) {
  return codePage == CP_ACP ? host::SystemCodePage() : codePage;
}

}  // namespace

INT WideCharToMultiByte(UINT codePage, DWORD, const WCHAR* text, INT characters, char* out,
                        INT bytes, const char* defaultChar, BOOL* usedDefault) {
  INT result = 0;
  const DWORD error = GuardedCode("WideCharToMultiByte", [&]() -> DWORD {
    std::u16string_view view;
    if (const DWORD failed = TextOf(text, characters, view)) return failed;
    const auto encoded = text::EncodeText(PageOf(codePage), view, defaultChar ? *defaultChar : '?');
    if (!encoded) return ERROR_INVALID_PARAMETER;
    if (usedDefault) *usedDefault = encoded->substituted ? TRUE : FALSE;
    return Deliver(encoded->bytes, out, bytes, result);
  });
  return Answer(error, result);
}

INT MultiByteToWideChar(UINT codePage, DWORD flags, const char* text, INT bytes, WCHAR* out,
                        INT characters) {
  INT result = 0;
  const DWORD error = GuardedCode("MultiByteToWideChar", [&]() -> DWORD {
    std::string_view view;
    if (const DWORD failed = TextOf(text, bytes, view)) return failed;
    bool wellFormed = true;
    const auto decoded = text::DecodeText(PageOf(codePage), view, wellFormed);
    if (!decoded) return ERROR_INVALID_PARAMETER;
    if (!wellFormed && (flags & kErrorOnInvalid) != 0) return ERROR_NO_UNICODE_TRANSLATION;
    return Deliver(*decoded, out, characters, result);
  });
  return Answer(error, result);
}

}  // namespace ce
