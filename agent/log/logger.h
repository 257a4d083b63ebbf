// The log file and what goes into its lines.
#pragma once

#include <array>
#include <atomic>
#include <mutex>
#include <span>
#include <string_view>

#include "agent/log/format.h"
#include "platform/threads.h"
#include "platform/types.h"

namespace corvane {

inline constexpr char16_t kLogPath[] = u"\\CorvaneLog.txt";
// From the root of the device as well, which a name without a path starts from.
inline constexpr char16_t kOldLogPath[] = u"CorvaneLogOld.txt";

// Most callers want log.h. Thread-safe; a line is written whole.
class Logger {
 public:
  static constexpr std::size_t kMaxMessage = 1024;  // characters
  static constexpr std::size_t kMaxLine = 1024;     // bytes
  static constexpr std::size_t kMaxIndent = 100;

  // The process's log, built on first use and destroyed at exit. Opens the file when it is not
  // open; a file that cannot be opened is tried again by the next call.
  static Logger& Instance();
  // Null until the log is built and after it is destroyed.
  static Logger* Existing();

  Logger(const Logger&) = delete;
  Logger& operator=(const Logger&) = delete;

  // Nothing while the file is closed. A message or line that is too long is dropped.
  void Log(const char16_t* format, std::span<const FormatArgument> arguments);
  void LogNarrow(const char* format, std::span<const FormatArgument> arguments);
  void LogBinary(const void* bytes, ce::DWORD count);

  // Ends the file.
  void Close();

  // The number of blanks before this thread's messages, kMaxIndent at most.
  void SetIndent(ce::DWORD blanks);

 private:
  Logger();
  ~Logger();

  void Open();
  void WriteHeader();
  void WriteLine(std::string_view message);
  std::size_t Indent() const;
  ce::DWORD Append(const void* bytes, ce::DWORD count);

  std::atomic<ce::HANDLE> file_{ce::INVALID_HANDLE_VALUE};
  std::recursive_mutex lock_;  // opening and closing write lines, too
  std::atomic<bool> isOpen_{false};
  ce::DWORD indentSlot_;
};

}  // namespace corvane
