// The diagnostic log: a text file that is written while the registry value "Logging" is nonzero.
//
// Callers use LOG, which tests the switch before it looks at its arguments. Every operation may be
// called from any thread and leaves the thread's last error as it was.
#pragma once

#include <array>
#include <atomic>
#include <span>

#include "agent/log/format.h"
#include "platform/types.h"

namespace corvane {

inline constexpr char16_t kAgentKey[] = u"SOFTWARE\\Tenbrook\\Corvane";
inline constexpr char16_t kLoggingValue[] = u"Logging";
inline constexpr ce::DWORD kVerboseLevel = 42;

// The switch: nonzero is on. Plain words on the device; read and written relaxed.
extern std::atomic<ce::DWORD> LoggingLevel;
extern std::atomic<bool> VerboseLogging;

inline bool LoggingIsOn() {
  return LoggingLevel.load(std::memory_order_relaxed) != 0;
}
// Sets both words.
void SetLoggingLevel(ce::DWORD level);

// Reads the switch from the registry, once per process; later calls return at once. Always 0.
ce::HRESULT LoadLogSettings();
// Switches off and forgets that the settings were loaded.
void ResetLogSettings();

// Ends the file with "Log finished" and closes it; nothing when it is not open. The next line opens
// it again. Call it before the handheld is closed.
void CloseLog();

// One line each. A message of more than 1024 characters, or whose line would be longer than 1024
// bytes, is dropped.
void LogArguments(const char16_t* format, std::span<const FormatArgument> arguments);
void LogNarrowArguments(const char* format, std::span<const FormatArgument> arguments);

template <typename... Arguments>
void Log(const char16_t* format, const Arguments&... arguments) {
  const std::array<FormatArgument, sizeof...(Arguments)> list{FormatArgument(arguments)...};
  LogArguments(format, list);
}

template <typename... Arguments>
void LogNarrow(const char* format, const Arguments&... arguments) {
  const std::array<FormatArgument, sizeof...(Arguments)> list{FormatArgument(arguments)...};
  LogNarrowArguments(format, list);
}

// The bytes as they stand, between two lines that say so.
void LogBinary(const void* bytes, ce::DWORD count);

}  // namespace corvane

#define LOG(...)                                               \
  do {                                                         \
    if (::corvane::LoggingIsOn()) ::corvane::Log(__VA_ARGS__); \
  } while (false)
