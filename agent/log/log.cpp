#include "agent/log/log.h"

#include "agent/log/logger.h"
#include "platform/registry.h"
#include "platform/status.h"

namespace corvane {
namespace {

std::atomic<bool> g_settingsLoaded{false};

// Statuses are often last errors: writing about one must not change the next.
class LastErrorKeeper {
 public:
  LastErrorKeeper() : error_(ce::GetLastError()) {}
  LastErrorKeeper(const LastErrorKeeper&) = delete;
  LastErrorKeeper& operator=(const LastErrorKeeper&) = delete;
  ~LastErrorKeeper() { ce::SetLastError(error_); }

 private:
  ce::DWORD error_;
};

}  // namespace

std::atomic<ce::DWORD> LoggingLevel{0};
std::atomic<bool> VerboseLogging{false};

void SetLoggingLevel(ce::DWORD level) {
  LoggingLevel.store(level, std::memory_order_relaxed);
  VerboseLogging.store(level == kVerboseLevel, std::memory_order_relaxed);
}

ce::HRESULT LoadLogSettings() {
  if (g_settingsLoaded.load(std::memory_order_relaxed)) return ce::S_OK;
  ce::HKEY key = 0;
  ce::HRESULT status = ce::RegOpenKeyExW(ce::HKEY_LOCAL_MACHINE, kAgentKey, 0, 0, &key);
  if (ce::Succeeded(status)) {
    ce::DWORD type = 0;
    ce::DWORD level = 0;
    ce::DWORD size = sizeof(level);
    status = ce::RegQueryValueExW(key, kLoggingValue, nullptr, &type,
                                  reinterpret_cast<ce::BYTE*>(&level), &size);
    if (ce::Succeeded(status) && type == ce::REG_DWORD && size == sizeof(level)) {
      SetLoggingLevel(level);
    }
    ce::RegCloseKey(key);
  }
  g_settingsLoaded.store(true, std::memory_order_relaxed);
  return ce::S_OK;
}

void ResetLogSettings() {
  SetLoggingLevel(0);
  g_settingsLoaded.store(false, std::memory_order_relaxed);
}

void CloseLog() {
  const LastErrorKeeper keeper;
  if (Logger* logger = Logger::Existing()) logger->Close();
}

void LogArguments(const char16_t* format, std::span<const FormatArgument> arguments) {
  const LastErrorKeeper keeper;
  Logger::Instance().Log(format, arguments);
}

void LogNarrowArguments(const char* format, std::span<const FormatArgument> arguments) {
  const LastErrorKeeper keeper;
  Logger::Instance().LogNarrow(format, arguments);
}

void LogBinary(const void* bytes, ce::DWORD count) {
  const LastErrorKeeper keeper;
  Logger::Instance().LogBinary(bytes, count);
}

}  // namespace corvane
