#include "agent/time/file_time.h"

namespace corvane {
namespace {

constexpr ce::FILETIME kNoTime = {0, 0xC0000000};

}  // namespace

ce::ULONGLONG Ticks(const ce::FILETIME& time) {
  return ce::ULONGLONG{time.dwHighDateTime} << 32 | time.dwLowDateTime;
}

ce::FILETIME AddSeconds(const ce::FILETIME& time, ce::LONGLONG seconds) {
  const ce::ULONGLONG ticks = Ticks(time) + static_cast<ce::ULONGLONG>(seconds * kTicksPerSecond);
  return {static_cast<ce::DWORD>(ticks), static_cast<ce::DWORD>(ticks >> 32)};
}

ce::FILETIME ToFileTime(const ce::SYSTEMTIME& time) {
  ce::FILETIME ticks{};
  return ce::SystemTimeToFileTime(&time, &ticks) ? ticks : kNoTime;
}

ce::SYSTEMTIME ToSystemTime(const ce::FILETIME& ticks) {
  ce::SYSTEMTIME time{};
  return ce::FileTimeToSystemTime(&ticks, &time) ? time : ce::SYSTEMTIME{};
}

}  // namespace corvane
