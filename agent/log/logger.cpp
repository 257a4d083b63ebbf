#include "agent/log/logger.h"

#include <algorithm>

#include "agent/log/build_stamp.h"
#include "platform/clock.h"
#include "platform/files.h"
#include "platform/system.h"
#include "platform/text.h"

namespace corvane {
namespace {

constexpr std::size_t kMaxTimeText = 400;
constexpr ce::DWORD kMaxModuleName = 260;

std::atomic<Logger*> g_existing{nullptr};

// The text that fits, or nothing.
template <std::size_t kSize, typename... Arguments>
std::string_view Print(std::array<char, kSize>& buffer, const char* format,
                       const Arguments&... arguments) {
  const std::array<FormatArgument, sizeof...(Arguments)> list{FormatArgument(arguments)...};
  const int length = FormatText(buffer, format, list);
  return length < 0 ? std::string_view() : std::string_view(buffer.data(), length);
}

}  // namespace

Logger& Logger::Instance() {
  static Logger logger;
  if (!logger.isOpen_.load(std::memory_order_acquire)) {
    logger.SetIndent(0);
    logger.Open();
  }
  return logger;
}

Logger* Logger::Existing() {
  return g_existing.load(std::memory_order_acquire);
}

Logger::Logger() : indentSlot_(ce::TlsAlloc()) {
  g_existing.store(this, std::memory_order_release);
}

Logger::~Logger() {
  Close();
  g_existing.store(nullptr, std::memory_order_release);
  ce::TlsFree(indentSlot_);
}

void Logger::Open() {
  const std::lock_guard guard(lock_);
  if (isOpen_) return;
  const ce::HANDLE file =
      ce::CreateFileW(kLogPath, ce::GENERIC_WRITE, ce::FILE_SHARE_READ | ce::FILE_SHARE_WRITE,
                      nullptr, ce::OPEN_ALWAYS, ce::FILE_ATTRIBUTE_NORMAL, 0);
  if (file == ce::INVALID_HANDLE_VALUE) return;
  ce::SetFilePointer(file, 0, nullptr, ce::FILE_END);
  file_ = file;
  isOpen_.store(true, std::memory_order_release);
  WriteHeader();
}

void Logger::WriteHeader() {
  ce::WCHAR module[kMaxModuleName + 1] = {};
  ce::GetModuleFileNameW(0, module, kMaxModuleName);
  ce::SYSTEMTIME now{};
  ce::GetLocalTime(&now);
  Log(u"=============================================", {});
  const FormatArgument values[] = {now.wDay,          now.wMonth,  now.wYear,
                                   now.wHour,         now.wMinute, now.wSecond,
                                   now.wMilliseconds, module,      ce::GetCurrentProcessId(),
                                   kBuildDate,        kBuildTime};
  Log(u"Log is started on %02u.%02u.%04u, at %02u:%02u:%02u:%03u, executable: %s (ProcID: 0x%08x), "
      u"compile time : %s %s",
      values);
}

void Logger::Log(const char16_t* format, std::span<const FormatArgument> arguments) {
  if (!isOpen_.load(std::memory_order_acquire)) return;
  std::array<char16_t, kMaxMessage> message;
  const int length = FormatText(message, format, arguments);
  if (length < 0) return;
  // Text that does not fit here would not fit into its line either.
  std::array<char, kMaxLine> narrow;
  int bytes = 0;
  if (length > 0) {
    bytes = ce::WideCharToMultiByte(ce::CP_ACP, 0, message.data(), length, narrow.data(),
                                    static_cast<ce::INT>(narrow.size()), nullptr, nullptr);
    if (bytes <= 0) return;
  }
  WriteLine({narrow.data(), static_cast<std::size_t>(bytes)});
}

void Logger::LogNarrow(const char* format, std::span<const FormatArgument> arguments) {
  if (!isOpen_.load(std::memory_order_acquire)) return;
  std::array<char, kMaxLine> message;
  const int length = FormatText(message, format, arguments);
  if (length >= 0) WriteLine({message.data(), static_cast<std::size_t>(length)});
}

void Logger::LogBinary(const void* bytes, ce::DWORD count) {
  if (!isOpen_.load(std::memory_order_acquire)) return;
  const FormatArgument before[] = {count};
  LogNarrow("***Binary data (%d bytes)", before);
  ce::SetFilePointer(file_, 0, nullptr, ce::FILE_END);
  ce::DWORD written = 0;
  ce::WriteFile(file_, bytes, count, &written, nullptr);
  written = 0;
  ce::WriteFile(file_, "\r\n", 2, &written, nullptr);
  const FormatArgument after[] = {written};  // of the line end, as readers of these logs know it
  LogNarrow("***End binary data (written %d bytes)", after);
}

void Logger::WriteLine(std::string_view message) {
  const std::lock_guard guard(lock_);
  if (!isOpen_) return;
  ce::SYSTEMTIME now{};
  ce::GetLocalTime(&now);
  ce::LONGLONG counter = 0;
  ce::QueryPerformanceCounter(&counter);
  std::array<char, kMaxTimeText> timeBuffer;
  const std::string_view time =
      Print(timeBuffer, "%02u:%02u:%02u(%I64d)", now.wHour, now.wMinute, now.wSecond, counter);
  std::array<char, kMaxIndent> blanks;
  blanks.fill(' ');
  std::array<char, kMaxLine> lineBuffer;
  const std::string_view line =
      Print(lineBuffer, "%s,thr 0x%08X : %s%s\r\n", time, ce::GetCurrentThreadId(),
            std::string_view(blanks.data(), Indent()), message);
  if (line.empty()) return;
  if (Append(line.data(), static_cast<ce::DWORD>(line.size())) < line.size()) {
    ce::FlushFileBuffers(file_);
  }
}

ce::DWORD Logger::Append(const void* bytes, ce::DWORD count) {
  ce::SetFilePointer(file_, 0, nullptr, ce::FILE_END);
  ce::DWORD written = 0;
  ce::WriteFile(file_, bytes, count, &written, nullptr);
  return written;
}

void Logger::Close() {
  const std::lock_guard guard(lock_);
  if (!isOpen_) return;
  Log(u"Log finished", {});
  ce::CloseHandle(file_);
  file_ = ce::INVALID_HANDLE_VALUE;
  isOpen_ = false;
}

void Logger::SetIndent(ce::DWORD blanks) {
  ce::TlsSetValue(indentSlot_, reinterpret_cast<void*>(std::uintptr_t{blanks}));
}

std::size_t Logger::Indent() const {
  return std::min<std::size_t>(reinterpret_cast<std::uintptr_t>(ce::TlsGetValue(indentSlot_)),
                               kMaxIndent);
}

}  // namespace corvane
