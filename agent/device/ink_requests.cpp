#include "agent/device/ink_requests.h"

#include <array>
#include <cstring>

#include "agent/device/ink_convert.h"
#include "agent/log/log.h"
#include "platform/com_ptr.h"
#include "platform/files.h"
#include "platform/memory.h"
#include "platform/status.h"

namespace corvane {
namespace {

constexpr ce::DWORD kFormatBytes = 4;
constexpr ce::DWORD kShortestFrom = 6;  // a path of one character
constexpr ce::DWORD kShortestTo = 10;
constexpr ce::DWORD kToHeaderBytes = 8;  // the format, the path's length

// A path as it came, with its terminator; half a character at the end is left out.
class Path {
 public:
  // False when it is longer than a path may be.
  [[nodiscard]] bool Copy(const ce::BYTE* bytes, ce::DWORD count) {
    const std::size_t characters = count / sizeof(char16_t);
    if (characters > kMaxPath) return false;
    std::memcpy(text_.data(), bytes, characters * sizeof(char16_t));
    text_[characters] = 0;
    return true;
  }
  const char16_t* get() const { return text_.data(); }

 private:
  std::array<char16_t, kMaxPath + 1> text_;
};

ce::HRESULT WriteWhole(const char16_t* path, const ce::BYTE* bytes, ce::DWORD count) {
  // Only null counts as no file: a failure to make it shows when it is written to.
  const ce::HANDLE file = ce::CreateFileW(path, ce::GENERIC_WRITE, 0, nullptr, ce::CREATE_ALWAYS,
                                          ce::FILE_ATTRIBUTE_NORMAL, 0);
  if (file == 0) return ce::LastErrorStatus();
  ce::HRESULT status = ce::S_OK;
  if (count != 0) {
    ce::DWORD written = 0;
    if (!ce::WriteFile(file, bytes, count, &written, nullptr)) {
      status = ce::LastErrorStatus();
    } else if (written < count) {
      status = kShortTransfer;
    }
  }
  ce::CloseHandle(file);
  return status;
}

}  // namespace

ce::HRESULT CVCeConvertFromFile(ce::DWORD inputCount, const ce::BYTE* input, ce::DWORD* outputCount,
                                ce::BYTE** output, CorvaneStream* stream) {
  LoadLogSettings();
  if (stream || inputCount < kShortestFrom) return ce::E_INVALIDARG;
  if (!LoadRichInk()) return ce::E_NOTIMPL;
  Path path;
  if (!path.Copy(input + kFormatBytes, inputCount - kFormatBytes)) return ce::E_INVALIDARG;
  return ConvertFileToBuffer(path.get(), InputWord(input), outputCount, output);
}

ce::HRESULT CVCeConvertToFile(ce::DWORD inputCount, const ce::BYTE* input, ce::DWORD* outputCount,
                              ce::BYTE** /*output*/, CorvaneStream* stream) {
  LoadLogSettings();
  if (stream || inputCount < kShortestTo) return ce::E_INVALIDARG;
  if (!LoadRichInk()) return ce::E_NOTIMPL;
  *outputCount = 0;
  const ce::DWORD pathBytes = InputWord(input + kFormatBytes);
  if (pathBytes > inputCount - kToHeaderBytes) return kPathTooLong;
  Path path;
  if (!path.Copy(input + kToHeaderBytes, pathBytes)) return ce::E_INVALIDARG;
  const ce::DWORD fileFormat = GetFormatFromExtension(path.get());
  if (fileFormat == 0) return kUnknownExtension;

  const ce::DWORD dataBytes = inputCount - kToHeaderBytes - pathBytes;
  ce::BYTE* converted = nullptr;
  ce::DWORD convertedBytes = 0;
  ce::HRESULT status = ce::S_OK;
  if (dataBytes > 0) {
    status = ConvertWithRichInk(input + kToHeaderBytes + pathBytes, dataBytes, InputWord(input),
                                &converted, &convertedBytes, fileFormat);
  }
  const ce::LocalPtr<ce::BYTE> owner(converted);
  return status == ce::S_OK ? WriteWhole(path.get(), converted, convertedBytes) : status;
}

ce::HRESULT CVCeHasRichInk(ce::DWORD /*inputCount*/, const ce::BYTE* /*input*/,
                           ce::DWORD* outputCount, ce::BYTE** output, CorvaneStream* stream) {
  if (stream) return ce::E_INVALIDARG;
  return Answer(ce::DWORD{LoadRichInk() ? 1u : 0u}, outputCount, output);
}

}  // namespace corvane
