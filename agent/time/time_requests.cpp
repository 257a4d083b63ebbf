#include "agent/time/time_requests.h"

#include <cstring>

#include "agent/log/log.h"
#include "agent/time/file_time.h"
#include "agent/time/zone.h"
#include "platform/memory.h"
#include "platform/status.h"

namespace corvane {

ce::BOOL MySetSystemTime(const ce::SYSTEMTIME& utc) {
  LoadLogSettings();
  LOG(u"MySetSystemTime called");
  ce::LONG daylightBias = 0;
  GetZoneBiases(nullptr, &daylightBias);
  ce::SYSTEMTIME present{};
  ce::GetSystemTime(&present);
  const bool isDaylightNow = IsDaylightTime(SystemTimeToBrokenDown(present)) != 0;
  const bool isDaylightThen = IsDaylightTime(SystemTimeToBrokenDown(utc)) != 0;
  ce::FILETIME ticks = ToFileTime(utc);
  if (isDaylightThen && !isDaylightNow) {
    LOG(u"subtracting DSTBias");
    ticks = AddSeconds(ticks, -ce::LONGLONG{daylightBias});
  } else if (!isDaylightThen && isDaylightNow) {
    LOG(u"adding DSTBias");
    ticks = AddSeconds(ticks, daylightBias);
  }
  const ce::SYSTEMTIME moved = ToSystemTime(ticks);
  return ce::SetSystemTime(&moved);
}

ce::HRESULT CVCeGetSystemTime(ce::DWORD /*inputCount*/, const ce::BYTE* /*input*/,
                              ce::DWORD* outputCount, ce::BYTE** output, CorvaneStream* stream) {
  if (stream) return ce::E_INVALIDARG;
  void* block = ce::LocalAlloc(ce::LMEM_ZEROINIT, sizeof(ce::SYSTEMTIME));
  if (!block) return ce::LastErrorStatus();
  ce::SYSTEMTIME now{};
  ce::GetSystemTime(&now);
  std::memcpy(block, &now, sizeof(now));
  *output = static_cast<ce::BYTE*>(block);
  *outputCount = sizeof(now);
  return ce::S_OK;
}

ce::HRESULT CVCeSetSystemTime(ce::DWORD inputCount, const ce::BYTE* input, ce::DWORD* outputCount,
                              ce::BYTE** /*output*/, CorvaneStream* stream) {
  ce::SYSTEMTIME utc{};
  if (inputCount != sizeof(utc) || stream) return ce::E_INVALIDARG;
  *outputCount = 0;
  std::memcpy(&utc, input, sizeof(utc));
  return MySetSystemTime(utc) ? ce::S_OK : ce::LastErrorStatus();
}

}  // namespace corvane
