#include "agent/log/logging_request.h"

#include <cstring>

#include "agent/log/log.h"
#include "agent/log/logger.h"
#include "platform/files.h"
#include "platform/registry.h"

namespace corvane {
namespace {

ce::HRESULT StoreLevel(ce::DWORD level) {
  ce::HKEY key = 0;
  ce::HRESULT status = ce::RegCreateKeyExW(ce::HKEY_LOCAL_MACHINE, kAgentKey, 0, nullptr, 0, 0,
                                           nullptr, &key, nullptr);
  if (ce::Failed(status)) return status;
  status = ce::RegSetValueExW(key, kLoggingValue, 0, ce::REG_DWORD,
                              reinterpret_cast<const ce::BYTE*>(&level), sizeof(level));
  ce::RegCloseKey(key);
  return status;
}

}  // namespace

ce::HRESULT CVResetLoggingState(ce::DWORD inputCount, const ce::BYTE* input,
                                ce::DWORD* /*outputCount*/, ce::BYTE** /*output*/,
                                CorvaneStream* stream) {
  ce::DWORD level = 0;
  if (inputCount != sizeof(level) || stream) return ce::E_INVALIDARG;
  std::memcpy(&level, input, sizeof(level));
  if (LoggingIsOn()) CloseLog();
  SetLoggingLevel(level);
  if (level != 0) {
    ce::DeleteFileW(kOldLogPath);
    ce::MoveFileW(kLogPath, kOldLogPath);
  }
  return StoreLevel(level);
}

}  // namespace corvane
