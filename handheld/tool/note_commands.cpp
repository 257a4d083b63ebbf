#include "handheld/tool/note_commands.h"

#include <fmt/core.h>

#include <string_view>

#include "common/files/error.h"
#include "common/files/standard_streams.h"
#include "common/text/unicode.h"
#include "handheld/ink/note_formats.h"
#include "handheld/system/device_path.h"
#include "handheld/tool/result.h"
#include "platform/files.h"
#include "platform/status.h"

namespace tool {
namespace {

constexpr char16_t kDocuments[] = u"\\My Documents";

struct FailureMeaning {
  ce::DWORD error;
  bool isWrongUse;
  const char* text;
};
constexpr FailureMeaning kFailureMeanings[] = {
    {ce::ERROR_INVALID_NAME, true, "a handheld has no file of this name"},
    {ce::ERROR_PATH_NOT_FOUND, true, "the handheld has no such directory"},
    {ce::ERROR_FILE_EXISTS, true, "the handheld has a file of this name already"},
    {ce::ERROR_ACCESS_DENIED, false, "access is denied"},
    {ce::ERROR_DISK_FULL, false, "the disk is full"},
    {ce::ERROR_NOT_ENOUGH_MEMORY, false, "memory ran out"},
};

[[noreturn]] void Fail(std::u16string_view path, ce::DWORD error) {
  const std::string name = text::ToUtf8Lossy(path);
  for (const FailureMeaning& meaning : kFailureMeanings) {
    if (meaning.error != error) continue;
    const std::string text = fmt::format("{}: {}", name, meaning.text);
    if (meaning.isWrongUse) throw UsageError(text);
    throw files::Error(text);
  }
  throw files::Error(fmt::format("{}: code {}", name, error));
}

void MakeDocuments(ce::host::Handheld& handheld) {
  ce::host::DevicePath documents;
  if (const ce::DWORD error = ce::host::ResolveDevicePath(kDocuments, documents))
    Fail(kDocuments, error);
  if (documents.exists) return;
  std::filesystem::create_directory(handheld.filesRoot() / documents.name);
}

// Makes the directory that a name without one goes to.
std::u16string DevicePathOf(ce::host::Handheld& handheld, const std::string& name) {
  const auto path = text::FromUtf8(name);
  if (!path) throw UsageError("the note's name is no UTF-8");
  if (path->starts_with(u'\\') || path->starts_with(u'/')) return *path;
  MakeDocuments(handheld);
  return kDocuments + (u"\\" + *path);
}

// Of the device, new. It goes again unless it is kept.
class NewFile {
 public:
  explicit NewFile(std::u16string path)
      : path_(std::move(path)),
        file_(ce::CreateFileW(path_.c_str(), ce::GENERIC_WRITE, 0, nullptr, ce::CREATE_NEW,
                              ce::FILE_ATTRIBUTE_NORMAL, ce::HANDLE{})) {
    if (file_ == ce::INVALID_HANDLE_VALUE) Fail(path_, ce::GetLastError());
  }
  ~NewFile() {
    ce::CloseHandle(file_);
    if (!kept_) ce::DeleteFileW(path_.c_str());
  }
  NewFile(const NewFile&) = delete;
  NewFile& operator=(const NewFile&) = delete;

  void Keep(std::string_view bytes) {
    ce::DWORD written = 0;
    if (!ce::WriteFile(file_, bytes.data(), static_cast<ce::DWORD>(bytes.size()), &written,
                       nullptr) ||
        !ce::FlushFileBuffers(file_))
      Fail(path_, ce::GetLastError());
    kept_ = true;
  }

 private:
  const std::u16string path_;
  const ce::HANDLE file_;
  bool kept_ = false;
};

}  // namespace

Outcome AddNote(Session& session, const std::filesystem::path& file,
                const std::optional<std::string>& name, const Report& report) {
  if (files::IsStandard(file) && !name)
    throw UsageError("a note from the standard input needs a NAME");
  const std::string bytes = files::ReadWholeInput(file);
  if (bytes.size() > ce::host::kMaxNoteBytes)
    throw UsageError(
        fmt::format("{}: a note has at most {} bytes", file.string(), ce::host::kMaxNoteBytes));
  const std::u16string path =
      DevicePathOf(session.handheld(), name.value_or(file.filename().string()));
  NewFile(path).Keep(bytes);
  const std::string shown = text::ToUtf8Lossy(path);
  TellResult(report, {{"path", shown}, {"bytes", bytes.size()}}, "{}: {} bytes\n", shown,
             bytes.size());
  return Outcome::kDone;
}

}  // namespace tool
