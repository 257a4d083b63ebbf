#include "agent/device/ink_convert.h"

#include <algorithm>
#include <iterator>
#include <mutex>

#include "agent/device/ink_stream.h"
#include "platform/com_ptr.h"
#include "platform/files.h"
#include "platform/memory.h"
#include "platform/modules.h"
#include "platform/status.h"
#include "platform/windows.h"

namespace corvane {
namespace {

constexpr char16_t kRichInk[] = u"RichInk";
constexpr ce::DWORD kSlack = 32;  // behind the converted bytes

struct ExtensionRow {
  std::u16string_view extension;
  ce::DWORD format;
};

constexpr ExtensionRow kExtensions[] = {
    {u"pwi", ce::SF_INK_NOTE},
    {u"rtf", ce::SF_RTF},
    {u"txt", ce::SF_TEXT},
    {u"unicode", ce::SF_TEXT_UNICODE},
};

struct Library {
  std::mutex lock;
  bool tried = false;
  ce::HMODULE module = nullptr;
};

Library& RichInkLibrary() {
  static Library library;
  return library;
}

// A file that is closed when it goes. Only null counts as no file, so one that could not be opened
// shows at the first use.
class NoteFile {
 public:
  explicit NoteFile(const char16_t* path)
      : handle_(ce::CreateFileW(path, ce::GENERIC_READ, ce::FILE_SHARE_READ, nullptr,
                                ce::OPEN_EXISTING, 0, 0)) {}
  NoteFile(const NoteFile&) = delete;
  NoteFile& operator=(const NoteFile&) = delete;
  ~NoteFile() {
    if (handle_ != 0) ce::CloseHandle(handle_);
  }
  ce::HANDLE handle() const { return handle_; }

 private:
  const ce::HANDLE handle_;
};

ce::HRESULT Send(ce::HWND window, ce::UINT message, ce::DWORD format, ce::EDITSTREAM stream) {
  return static_cast<ce::HRESULT>(
      ce::SendMessageW(window, message, format, reinterpret_cast<ce::LPARAM>(&stream)));
}

// The size is not known before the control has written everything, so it writes twice.
ce::HRESULT StreamOut(ce::HWND window, ce::DWORD format, ce::BYTE** buffer, ce::DWORD* count) {
  WriteState counted;
  ce::HRESULT status = Send(window, ce::EM_STREAMOUT, format, StreamOver(counted, WriteNote));
  if (status != ce::S_OK) return status;
  const ce::DWORD capacity = counted.position + kSlack;
  ce::LocalPtr<ce::BYTE> block(ce::LocalAlloc(ce::LMEM_FIXED, capacity));
  if (!block) return ce::LastErrorStatus();
  WriteState written{block.get(), 0, capacity};
  status = Send(window, ce::EM_STREAMOUT, format, StreamOver(written, WriteNote));
  if (status != ce::S_OK) return status;
  *buffer = block.detach();
  *count = written.position;
  return ce::S_OK;
}

ce::HRESULT ReadWhole(const char16_t* path, ce::LocalPtr<ce::BYTE>& bytes, ce::DWORD& size) {
  const NoteFile file(path);
  size = ce::GetFileSize(file.handle(), nullptr);
  if (size == ce::INVALID_FILE_SIZE) return ce::LastErrorStatus();
  bytes.reset(ce::LocalAlloc(ce::LMEM_FIXED, size));
  if (!bytes) return ce::LastErrorStatus();
  ce::DWORD read = 0;
  if (!ce::ReadFile(file.handle(), bytes.get(), size, &read, nullptr)) return ce::LastErrorStatus();
  return read < size ? kShortTransfer : ce::S_OK;
}

}  // namespace

bool LoadRichInk() {
  Library& library = RichInkLibrary();
  const std::lock_guard guard(library.lock);
  if (!library.tried) {
    library.module = ce::LoadLibraryW(u"RichInk.dll");
    library.tried = true;
  }
  return library.module != nullptr;
}

void ResetRichInk() {
  Library& library = RichInkLibrary();
  const std::lock_guard guard(library.lock);
  if (library.module) ce::FreeLibrary(library.module);
  library.module = nullptr;
  library.tried = false;
}

ce::DWORD GetFormatFromExtension(std::u16string_view path) {
  const std::size_t dot = path.rfind(u'.');
  if (dot == std::u16string_view::npos) return 0;
  const std::u16string_view extension = path.substr(dot + 1);
  const auto* const row = std::ranges::find(kExtensions, extension, &ExtensionRow::extension);
  return row == std::end(kExtensions) ? 0 : row->format;
}

ce::HRESULT ConvertWithRichInk(const ce::BYTE* data, ce::DWORD size, ce::DWORD inputFormat,
                               ce::BYTE** buffer, ce::DWORD* count, ce::DWORD outputFormat) {
  *buffer = nullptr;
  *count = 0;
  if (!LoadRichInk()) return ce::E_NOTIMPL;
  const ce::HWND window = ce::CreateWindowExW(
      0, kRichInk, kRichInk, ce::WS_CHILD, ce::CW_USEDEFAULT, ce::CW_USEDEFAULT, ce::CW_USEDEFAULT,
      ce::CW_USEDEFAULT, ce::GetForegroundWindow(), 0, ce::GetModuleHandleW(nullptr), nullptr);
  if (window == 0) return ce::LastErrorStatus();
  ReadState source{data, 0, size};
  ce::HRESULT status = Send(window, ce::EM_STREAMIN, inputFormat, StreamOver(source, ReadNote));
  if (status == ce::S_OK) status = StreamOut(window, outputFormat, buffer, count);
  if (!ce::DestroyWindow(window)) status = ce::LastErrorStatus();
  return status;
}

ce::HRESULT ConvertFileToBuffer(const char16_t* path, ce::DWORD outputFormat, ce::DWORD* count,
                                ce::BYTE** buffer) {
  *buffer = nullptr;
  *count = 0;
  const ce::DWORD inputFormat = GetFormatFromExtension(path);
  if (inputFormat == 0) return kUnknownExtension;
  ce::LocalPtr<ce::BYTE> bytes;
  ce::DWORD size = 0;
  if (const ce::HRESULT status = ReadWhole(path, bytes, size); status != ce::S_OK) return status;
  return ConvertWithRichInk(bytes.get(), size, inputFormat, buffer, count, outputFormat);
}

}  // namespace corvane
