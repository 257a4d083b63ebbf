#include "handheld/tool/note_texts.h"

#include <fmt/core.h>

#include <algorithm>
#include <array>
#include <string_view>
#include <vector>

#include "common/files/atomic_file.h"
#include "common/files/error.h"
#include "common/text/text.h"
#include "common/text/unicode.h"
#include "handheld/ink/note_formats.h"
#include "platform/windows.h"

namespace tool {
namespace {

namespace fs = std::filesystem;

constexpr char kNotesFolder[] = "My Documents";

struct NoteKind {
  std::string_view extension;
  ce::DWORD format;
};
constexpr std::array<NoteKind, 4> kNoteKinds = {{{".pwi", ce::SF_INK_NOTE},
                                                 {".rtf", ce::SF_RTF},
                                                 {".txt", ce::SF_TEXT},
                                                 {".unicode", ce::SF_TEXT_UNICODE}}};

const ce::host::NoteFormat* FormatOfNote(const fs::path& file) {
  for (const NoteKind& kind : kNoteKinds)
    if (text::EqualsNoCase(file.extension().string(), kind.extension))
      return ce::host::FindNoteFormat(kind.format);
  return nullptr;
}

// Files below the folder, links not followed.
std::vector<fs::path> FilesBelow(const fs::path& folder) {
  std::vector<fs::path> files;
  std::error_code error;
  fs::recursive_directory_iterator entry(folder, error);
  for (const fs::recursive_directory_iterator end; !error && entry != end; entry.increment(error)) {
    std::error_code gone;
    if (entry->symlink_status(gone).type() == fs::file_type::regular)
      files.push_back(entry->path());
  }
  if (error) throw files::Error(fmt::format("{}: {}", folder.string(), error.message()));
  std::ranges::sort(files);
  return files;
}

std::string ReadNote(const fs::path& file, const ce::host::NoteFormat& format) {
  std::error_code error;
  if (fs::file_size(file, error) > ce::host::kMaxNoteBytes)
    throw files::Error("it is too large for a note");
  const auto text = format.read(files::ReadWholeFile(file));
  if (!text) throw files::Error("the note is damaged");
  return text::ToUtf8Lossy(*text);
}

}  // namespace

void ForEachNote(const fs::path& root, const NoteVisitor& visit, const NoteProblem& tell) {
  for (const fs::directory_entry& folder : fs::directory_iterator(root)) {
    if (folder.is_symlink() || !folder.is_directory()) continue;
    if (!text::EqualsNoCase(folder.path().filename().string(), kNotesFolder)) continue;
    for (const fs::path& file : FilesBelow(folder.path())) {
      const ce::host::NoteFormat* const format = FormatOfNote(file);
      if (!format) continue;
      std::string path = "\\" + fs::relative(file, root).generic_string();
      std::ranges::replace(path, '/', '\\');
      try {
        visit(path, ReadNote(file, *format));
      } catch (const files::Error& error) {
        tell(path + ": " + error.what());
      }
    }
  }
}

}  // namespace tool
