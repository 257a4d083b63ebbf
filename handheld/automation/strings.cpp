#include <cstddef>
#include <cstring>
#include <limits>
#include <string>

#include "handheld/automation/string_blocks.h"
#include "handheld/base/fault.h"
#include "platform/automation.h"
#include "platform/status.h"

namespace ce {
namespace {

// The byte count stands in the 4 bytes before the text; 8 keep the text aligned.
constexpr std::size_t kHeader = 8;
constexpr UINT kMaxCharacters = std::numeric_limits<DWORD>::max() / sizeof(WCHAR) - kHeader;

std::size_t BlockBytes(std::size_t characters) {
  return kHeader + (characters + 1) * sizeof(WCHAR);
}

// The one of no characters, of which there need be no more: a zero byte count, and the terminator.
struct EmptyString {
  alignas(kHeader) char header[kHeader];
  WCHAR terminator;
};
EmptyString g_empty;
static_assert(offsetof(EmptyString, terminator) == kHeader);

BSTR Allocate(const WCHAR* text, std::size_t characters) {
  if (characters == 0) return &g_empty.terminator;
  const std::size_t bytes = characters * sizeof(WCHAR);
  char* block = characters > kMaxCharacters
                    ? nullptr
                    : static_cast<char*>(host::StringBlocks::Allocate(BlockBytes(characters)));
  if (!block) {
    SetLastError(ERROR_NOT_ENOUGH_MEMORY);
    return nullptr;
  }
  const auto prefix = static_cast<DWORD>(bytes);
  std::memcpy(block + kHeader - sizeof(prefix), &prefix, sizeof(prefix));
  const auto result = reinterpret_cast<BSTR>(block + kHeader);
  if (text) std::memcpy(result, text, bytes);
  result[characters] = 0;
  return result;
}

}  // namespace

BSTR SysAllocString(const WCHAR* text) {
  if (const DWORD error = host::FaultFor("SysAllocString")) {
    SetLastError(error);
    return nullptr;
  }
  return text ? Allocate(text, std::char_traits<WCHAR>::length(text)) : nullptr;
}

BSTR SysAllocStringLen(const WCHAR* text, UINT characters) {
  if (const DWORD error = host::FaultFor("SysAllocStringLen")) {
    SetLastError(error);
    return nullptr;
  }
  return Allocate(text, characters);
}

void SysFreeString(BSTR text) {
  if (!text || text == &g_empty.terminator) return;
  host::StringBlocks::Free(reinterpret_cast<char*>(text) - kHeader, BlockBytes(SysStringLen(text)));
}

UINT SysStringLen(BSTR text) {
  if (!text) return 0;
  DWORD bytes = 0;
  std::memcpy(&bytes, reinterpret_cast<const char*>(text) - sizeof(bytes), sizeof(bytes));
  return bytes / sizeof(WCHAR);
}

}  // namespace ce
