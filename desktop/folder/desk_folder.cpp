#include "desktop/folder/desk_folder.h"

#include <fmt/format.h>
#include <fmt/ranges.h>

#include <algorithm>
#include <map>
#include <utility>

#include "common/files/atomic_file.h"
#include "common/formats/items/identity.h"
#include "common/text/text.h"
#include "desktop/folder/desk_reader.h"
#include "desktop/folder/file_edit.h"
#include "desktop/folder/file_names.h"
#include "desktop/folder/known_items.h"
#include "desktop/folder/plain_file.h"

namespace desktop {
namespace {

namespace fs = std::filesystem;

// Of the file systems in use.
constexpr std::chrono::seconds kCoarsestClock{2};
constexpr std::string_view kSubfolders[] = {kContactsFolder, kCalendarFolder, kTasksFolder};

bool IsAskedFor(const DeskParts& parts, std::string_view subfolder) {
  return subfolder == kContactsFolder ? parts.contacts : parts.calendar;
}

void RefuseLink(const fs::path& directory) {
  std::error_code ignored;
  if (!fs::is_symlink(fs::symlink_status(directory, ignored))) return;
  throw files::Error(directory.string() + " is a link; a folder of its own is needed");
}

std::string SubfolderOfPath(const fs::path& file) {
  return file.empty() ? std::string() : file.begin()->string();
}

// A file's name as the folder gives it: below one of the subfolders, and no deeper.
bool IsDeskPath(const fs::path& file) {
  const std::string subfolder = SubfolderOfPath(file);
  return std::distance(file.begin(), file.end()) == 2 && file.filename() != ".." &&
         std::find(std::begin(kSubfolders), std::end(kSubfolders), subfolder) !=
             std::end(kSubfolders);
}

bool IsNameOfFile(std::string_view name, std::string_view extension) {
  return !name.starts_with('.') && name.size() > extension.size() &&
         text::EqualsNoCase(name.substr(name.size() - extension.size()), extension);
}

// Calls it with the path of each, and that below the root.
template <typename Look>
void ForEachFile(const fs::path& root, std::string_view subfolder, const Look& look) {
  const fs::path directory = root / subfolder;
  RefuseLink(directory);
  std::error_code error;
  fs::directory_iterator entries(directory, error);
  if (error == std::errc::no_such_file_or_directory) return;
  const fs::directory_iterator end;
  for (; !error && entries != end; entries.increment(error)) {
    const std::string& path = entries->path().native();
    const std::string_view name = std::string_view(path).substr(path.rfind('/') + 1);
    if (!IsNameOfFile(name, ExtensionOf(subfolder))) continue;
    look(entries->path(), fmt::format("{}/{}", subfolder, name));
  }
  if (error) {
    throw files::Error(fmt::format("cannot read {}: {}", directory.string(), error.message()));
  }
}

// Empty for a file of just now: a change that comes right after it may leave the same stamp.
std::string SettledStamp(const FileStamp& stamp, std::chrono::system_clock::time_point now) {
  return stamp.changed + kCoarsestClock < now ? stamp.text : std::string();
}

class FolderReader {
 public:
  FolderReader(const fs::path& root, const calendar::Zone& zone, DeskFiles known,
               std::chrono::system_clock::time_point now)
      : root_(root), zone_(zone), known_(std::move(known)), now_(now) {}

  DeskContents Read(const DeskParts& parts) {
    for (const std::string_view subfolder : kSubfolders) {
      if (!IsAskedFor(parts, subfolder)) continue;
      ForEachFile(root_, subfolder,
                  [this](const fs::path& path, const std::string& file) { Look(path, file); });
    }
    for (auto each = known_.begin(); each != known_.end();) {
      const auto file = each++;
      if (!IsAskedFor(parts, SubfolderOfPath(file->first))) Keep(file);
    }
    GiveKeys(contents_.files, known_, contents_.notices);
    std::stable_sort(contents_.notices.begin(), contents_.notices.end(),
                     [](const DeskNotice& a, const DeskNotice& b) {
                       return std::pair(a.file, a.line) < std::pair(b.file, b.line);
                     });
    return std::move(contents_);
  }

 private:
  void Look(const fs::path& path, const std::string& file);
  void ReadFile(const std::string& file);
  void LeaveAlone(const std::string& file, std::string why);
  // The file has what it had.
  DeskFile& Keep(DeskFiles::iterator known) {
    return contents_.files.insert(known_.extract(known)).position->second;
  }

  const fs::path& root_;
  const calendar::Zone& zone_;
  DeskFiles known_;  // those that have not been looked at, and those that are not as they were
  const std::chrono::system_clock::time_point now_;
  DeskContents contents_;
};

void FolderReader::Look(const fs::path& path, const std::string& file) {
  const FileLook look = LookAt(path);
  switch (look.type) {
    case FileType::kNothing:
      return;  // gone since
    case FileType::kFile:
      break;
    case FileType::kLink:
      return LeaveAlone(file, "a link, left alone");
    case FileType::kOther:
      return LeaveAlone(file, "not a file, left alone");
  }
  const auto known = known_.find(file);
  const bool same = known != known_.end() && !known->second.stamp.empty() &&
                    known->second.stamp == look.stamp.text;
  if (same) {
    Keep(known);
  } else {
    ReadFile(file);
  }
}

void FolderReader::ReadFile(const std::string& file) {
  FileBytes read;
  try {
    read = ReadPlainFile(root_ / file);
  } catch (const files::Error& error) {
    std::error_code ignored;
    if (!fs::exists(fs::symlink_status(root_ / file, ignored))) return;
    return LeaveAlone(file, fmt::format("{}; left alone", error.what()));
  }
  ++contents_.filesRead;
  DeskReading reading = ReadDeskBytes(file, read.bytes, zone_);
  if (!reading.whole) return LeaveAlone(file, "empty or cut off, left alone");
  contents_.files[file] = {SettledStamp(read.stamp, now_), true, std::move(reading.items)};
  std::move(reading.notices.begin(), reading.notices.end(), std::back_inserter(contents_.notices));
}

void FolderReader::LeaveAlone(const std::string& file, std::string why) {
  const auto known = known_.find(file);
  DeskFile& left = known != known_.end() ? Keep(known) : contents_.files[file];
  left.stamp.clear();
  left.readable = false;
  contents_.notices.push_back({DeskTrouble::kLeftAlone, file, 0, std::move(why)});
}

void ThrowIfRefused(const DeskOutcome& outcome) {
  if (!outcome.refused) return;
  throw FileChanged(fmt::format("{}: {} {}", outcome.item.file.string(),
                                DisplayName(outcome.item.item), fmt::join(outcome.losses, "; ")));
}

}  // namespace

DeskFolder::DeskFolder(fs::path root, calendar::Zone zone, Clock clock)
    : root_(std::move(root)), zone_(std::move(zone)), clock_(std::move(clock)) {}

void DeskFolder::Make() const {
  for (const std::string_view subfolder : kSubfolders) {
    files::MakePrivateDirectories(root_ / subfolder);
  }
}

DeskContents DeskFolder::Read(const DeskParts& parts, DeskFiles known) const {
  return FolderReader(root_, zone_, std::move(known), clock_()).Read(parts);
}

std::map<std::string, std::string> DeskFolder::Stamps() const {
  std::map<std::string, std::string> stamps;
  const auto now = clock_();
  for (const std::string_view subfolder : kSubfolders) {
    ForEachFile(root_, subfolder, [&](const fs::path& path, const std::string& file) {
      const FileLook look = LookAt(path);
      if (look.type == FileType::kFile) stamps.emplace(file, SettledStamp(look.stamp, now));
    });
  }
  return stamps;
}

DeskOutcome DeskFolder::Add(Item item) const {
  if (UidOf(item).empty()) SetUid(item, formats::NewUid());
  const std::string subfolder(SubfolderOf(KindOf(item)));
  RefuseLink(root_ / subfolder);
  files::MakePrivateDirectories(root_ / subfolder);
  DeskText text = TextOfItem(item, zone_);
  const fs::path name = FileStemFor(UidOf(item)) + std::string(ExtensionOf(subfolder));
  DeskReading reading = ReadDeskBytes(fs::path(subfolder) / name, text.bytes, zone_);
  DeskOutcome outcome;
  outcome.losses = std::move(text.losses);
  if (reading.items.size() != 1) {
    outcome.refused = true;
    outcome.item.item = std::move(item);
    return outcome;
  }
  outcome.item = std::move(reading.items.front());
  outcome.item.key = KeyOf(outcome.item.item);
  outcome.item.file =
      fs::path(subfolder) / WriteToFreeName(text.bytes, root_ / subfolder / name).filename();
  return outcome;
}

std::vector<DeskOutcome> DeskFolder::Edit(std::span<const DeskEdit> edits,
                                          const fs::path& trash) const {
  std::vector<DeskOutcome> outcomes(edits.size());
  const auto now = std::chrono::floor<std::chrono::seconds>(clock_());
  std::map<fs::path, std::vector<FileWish>> byFile;
  for (std::size_t i = 0; i < edits.size(); ++i) {
    outcomes[i].item = edits[i].item;
    byFile[edits[i].item.file].push_back({&edits[i], &outcomes[i]});
  }
  for (auto& [file, wishes] : byFile) {
    if (!IsDeskPath(file)) throw files::Error(file.string() + " is no file of the folder");
    RefuseLink(root_ / file.parent_path());
    EditDeskFile({root_, zone_, trash, now}, file, std::move(wishes));
  }
  return outcomes;
}

DeskOutcome DeskFolder::Change(const DeskItem& item, const Item& to) const {
  const DeskEdit edit{item, to};
  DeskOutcome outcome = std::move(Edit({&edit, 1}, {}).front());
  ThrowIfRefused(outcome);
  return outcome;
}

void DeskFolder::Remove(const DeskItem& item, const fs::path& trash) const {
  const DeskEdit edit{item, std::nullopt};
  ThrowIfRefused(Edit({&edit, 1}, trash).front());
}

}  // namespace desktop
