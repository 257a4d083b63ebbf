#include "handheld/outlook/item_clock.h"

#include <algorithm>

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

}  // namespace ce::host
