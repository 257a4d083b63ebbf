#include "agent/device/card_enumeration.h"

#include <algorithm>
#include <string_view>

namespace corvane {
namespace {

bool IsCard(const ce::WIN32_FIND_DATAW& entry) {
  constexpr ce::DWORD kCard = ce::FILE_ATTRIBUTE_DIRECTORY | ce::FILE_ATTRIBUTE_TEMPORARY;
  return (entry.dwFileAttributes & kCard) == kCard;
}

}  // namespace

ce::HANDLE FindFirstCard(ce::WIN32_FIND_DATAW* card) {
  const ce::HANDLE search = ce::FindFirstFileW(u"\\*", card);
  if (search == ce::INVALID_HANDLE_VALUE || IsCard(*card)) return search;
  return FindNextCard(search, card) ? search : ce::INVALID_HANDLE_VALUE;
}

bool FindNextCard(ce::HANDLE search, ce::WIN32_FIND_DATAW* card) {
  while (ce::FindNextFileW(search, card)) {
    if (IsCard(*card)) return true;
  }
  ce::FindClose(search);
  return false;
}

ce::LONG GetCardCount() {
  ce::WIN32_FIND_DATAW card;
  const ce::HANDLE search = FindFirstCard(&card);
  if (search == ce::INVALID_HANDLE_VALUE) return 0;
  ce::LONG count = 1;
  while (FindNextCard(search, &card)) ++count;
  return count;
}

bool GetCardPath(ce::LONG index, ce::WCHAR* path, ce::DWORD characters) {
  path[0] = 0;
  ce::WIN32_FIND_DATAW card;
  const ce::HANDLE search = FindFirstCard(&card);
  if (search == ce::INVALID_HANDLE_VALUE) return false;
  for (ce::LONG passed = 0; passed < index; ++passed) {
    if (!FindNextCard(search, &card)) return false;
  }
  const std::u16string_view name(card.cFileName);
  const std::size_t length = std::min<std::size_t>(name.size(), characters - 2);
  path[0] = u'\\';
  std::copy_n(name.begin(), length, path + 1);
  path[length + 1] = 0;
  ce::FindClose(search);
  return true;
}

}  // namespace corvane
