#include "handheld/tool/page_command.h"

#include <fmt/core.h>

#include <algorithm>
#include <array>
#include <chrono>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "common/files/atomic_file.h"
#include "common/files/error.h"
#include "common/page/page_file.h"
#include "common/phone/phone_numbers.h"
#include "common/text/text.h"
#include "common/text/unicode.h"
#include "handheld/base/settings.h"
#include "handheld/ink/note_formats.h"
#include "handheld/system/language.h"
#include "handheld/tool/card_commands.h"
#include "handheld/tool/handheld_copy.h"
#include "handheld/tool/output.h"
#include "handheld/tool/records.h"
#include "platform/clock.h"
#include "platform/disk_space.h"
#include "platform/windows.h"

namespace tool {
namespace {

namespace fs = std::filesystem;

using page::Contents;

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

void AddNotes(const fs::path& root, Contents& contents) {
  for (const fs::directory_entry& folder : fs::directory_iterator(root)) {
    if (folder.is_symlink() || !folder.is_directory()) continue;
    if (!text::EqualsNoCase(folder.path().filename().string(), kNotesFolder)) continue;
    for (const fs::path& file : FilesBelow(folder.path())) {
      const ce::host::NoteFormat* const format = FormatOfNote(file);
      if (!format) continue;
      std::string path = "\\" + fs::relative(file, root).generic_string();
      std::ranges::replace(path, '/', '\\');
      try {
        contents.notes.push_back({path, ReadNote(file, *format)});
      } catch (const files::Error& error) {
        contents.remarks.push_back(path + ": " + error.what());
      }
    }
  }
}

void AddVolume(const std::string& name, const char16_t* path, Contents& contents) {
  ce::ULONGLONG free = 0;
  ce::ULONGLONG total = 0;
  if (ce::GetDiskFreeSpaceExW(path, &free, &total, nullptr))
    contents.volumes.push_back({name, total, free});
}

void AddVolumes(ce::host::Handheld& handheld, Contents& contents) {
  AddVolume("Handheld", nullptr, contents);
  for (const Card& card : ListCards(handheld)) {
    const std::u16string path = u"\\" + text::FromUtf8Lossy(card.name);
    if (card.present) AddVolume(card.name, path.c_str(), contents);
  }
}

template <typename Record>
void AddRecords(Session& session, std::vector<Record>& records) {
  ForEachRecord<Record>(session,
                        [&](std::int64_t, const Record& record) { records.push_back(record); });
}

// All kinds as they are at one moment: each is read by a connection of its own, so that they are
// read from a copy.
void AddItems(Session& session, Contents& contents) {
  const WorkDirectory work(fs::temp_directory_path());
  if (!CopyStore(session, work.path() / session.handheld().storePath().filename())) return;
  constexpr char kRegistry[] = "registry.reg";
  fs::copy_file(session.handheld().directory() / kRegistry, work.path() / kRegistry);
  fs::create_directory(work.path() / "files");
  {
    Session copy(work.path(), Use::kLook);
    AddRecords(copy, contents.people);
    AddRecords(copy, contents.appointments);
    AddRecords(copy, contents.tasks);
    AddRecords(copy, contents.messages);
    AddRecords(copy, contents.calls);
  }
  ce::host::Handheld::MakeCurrent(&session.handheld());
}

// That of its language, such as "de-AT".
std::string CountryOf(ce::host::Handheld& handheld) {
  const auto id = static_cast<ce::LANGID>(
      handheld.Number(ce::host::setting::kLanguage, ce::host::kLangEnglishUs));
  const ce::host::Language* const language = ce::host::FindLanguage(id);
  if (!language) return {};
  const std::string country(language->tag.substr(language->tag.rfind('-') + 1));
  return phone::PhoneNumbers::IsCountry(country) ? country : std::string();
}

formats::local_seconds LocalNow(const calendar::Zone& zone) {
  ce::SYSTEMTIME now{};
  ce::GetSystemTime(&now);
  const std::chrono::sys_days day{std::chrono::year(now.wYear) / now.wMonth / now.wDay};
  return zone.ToLocal(day + std::chrono::hours(now.wHour) + std::chrono::minutes(now.wMinute) +
                      std::chrono::seconds(now.wSecond));
}

std::string NameOfDirectory(const fs::path& directory) {
  const fs::path whole = fs::absolute(directory).lexically_normal();
  return (whole.has_filename() ? whole : whole.parent_path()).filename().string();
}

}  // namespace

Outcome MakePage(Session& session, const std::optional<fs::path>& file, const Report& report) {
  ce::host::Handheld& handheld = session.handheld();
  const calendar::Zone zone = session.Zone();
  Contents contents{
      .name = NameOfDirectory(handheld.directory()),
      .owner = text::ToUtf8Lossy(handheld.Text(ce::host::setting::kOwner, u"")),
      .country = CountryOf(handheld),
      .zone = zone,
      .now = LocalNow(zone),
  };
  AddItems(session, contents);
  AddNotes(handheld.filesRoot(), contents);
  AddVolumes(handheld, contents);
  const bool toFile = file && *file != "-";
  Output output(toFile ? file : std::nullopt, report);
  page::WritePage(contents, [&](std::string_view piece) { output << piece; });
  output.Finish();
  for (const std::string& remark : contents.remarks)
    Tell(report.err, "corvane-device: {}\n", remark);
  if (toFile) Tell(report.out, "{}: a page, to be opened in any browser\n", file->string());
  return contents.remarks.empty() ? Outcome::kDone : Outcome::kPartlyDone;
}

}  // namespace tool
