#include "desktop/folder/file_edit.h"

#include <algorithm>
#include <chrono>
#include <map>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "common/files/atomic_file.h"
#include "common/formats/items/identity.h"
#include "desktop/folder/desk_reader.h"
#include "desktop/folder/edit_text.h"
#include "desktop/folder/file_names.h"
#include "desktop/folder/plain_file.h"

namespace desktop {
namespace {

namespace fs = std::filesystem;

constexpr const char* kChanged = "is no longer as it was read";

void Refuse(DeskOutcome& outcome, const char* why) {
  outcome.refused = true;
  outcome.losses.emplace_back(why);
}

// Which of the items of its kind it is; those without a UID are told by their order.
struct Standing {
  ItemKind kind;
  std::string uid;
  std::size_t rank = 0;  // among those of its kind that have no UID
};

// One reading of the file, its edits, and one writing.
class FilePass {
 public:
  FilePass(const DeskPlace& place, const fs::path& file)
      : place_(place),
        file_(file),
        read_(ReadPlainFile(place.root / file)),
        reading_(ReadDeskBytes(file, read_.bytes, place.zone)),
        text_(read_.bytes, place.zone, place.now) {}

  // The wishes for items whose lines an edit before them has changed.
  std::vector<FileWish> Carry(const std::vector<FileWish>& wishes);

 private:
  const DeskItem* Find(const DeskItem& item) const;
  // Whether it is done with, one way or the other.
  bool Take(const FileWish& wish, const DeskItem& item);
  Standing StandingOf(const DeskItem& item) const;
  void Write();
  void Report();

  const DeskPlace& place_;
  const fs::path& file_;
  const FileBytes read_;
  const DeskReading reading_;
  TextEdit text_;
  std::vector<std::pair<DeskOutcome*, const DeskItem*>> changed_, removed_;
};

// The one that is as it was read, at its line or wherever it stands by now.
const DeskItem* FilePass::Find(const DeskItem& item) const {
  if (!reading_.whole) return nullptr;
  const auto isIt = [&](const DeskItem& each) { return each.item == item.item; };
  auto there = std::ranges::lower_bound(reading_.items, item.line, {}, &DeskItem::line);
  for (; there != reading_.items.end() && there->line == item.line; ++there) {
    if (isIt(*there)) return &*there;
  }
  const auto same = std::ranges::find_if(reading_.items, isIt);
  return same == reading_.items.end() ? nullptr : &*same;
}

bool FilePass::Take(const FileWish& wish, const DeskItem& item) {
  const TextChange change = wish.edit->to ? text_.Change(item.line, item.item, *wish.edit->to)
                                          : text_.Remove(item.line, item.item);
  if (change.later) return false;
  wish.outcome->losses = change.losses;
  wish.outcome->refused = !change.done;
  if (change.done) (wish.edit->to ? changed_ : removed_).emplace_back(wish.outcome, &item);
  return true;
}

std::vector<FileWish> FilePass::Carry(const std::vector<FileWish>& wishes) {
  std::vector<FileWish> later;
  for (const FileWish& wish : wishes) {
    const DeskItem* item = Find(wish.edit->item);
    if (item == nullptr) {
      Refuse(*wish.outcome, kChanged);
    } else if (!Take(wish, *item)) {
      later.push_back(wish);
    }
  }
  if (changed_.empty() && removed_.empty()) return later;
  if (LookAt(place_.root / file_).stamp == read_.stamp) {
    Write();
    Report();
  } else {
    for (const auto& [outcome, item] : changed_) Refuse(*outcome, kChanged);
    for (const auto& [outcome, item] : removed_) Refuse(*outcome, kChanged);
  }
  return later;
}

void FilePass::Write() {
  const fs::path subfolder = place_.trash / file_.parent_path();
  if (!removed_.empty()) files::MakePrivateDirectories(subfolder);
  if (text_.IsEmpty()) {
    MoveToFreeName(place_.root / file_, place_.trash / file_);
    return;
  }
  for (const auto& [outcome, item] : removed_) {
    fs::path name = FileStemFor(UidOf(item->item));
    name += file_.extension();
    WriteToFreeName(text_.CutOut(item->line), subfolder / name);
  }
  const std::string bytes = text_.bytes();
  if (bytes == read_.bytes) return;
  files::AtomicFile file(place_.root / file_);
  file.Write(bytes);
  file.Commit();
}

Standing FilePass::StandingOf(const DeskItem& item) const {
  Standing standing{KindOf(item.item), UidOf(item.item)};
  if (!standing.uid.empty()) return standing;
  for (const DeskItem& each : reading_.items) {
    if (&each == &item) break;
    const bool gone = std::any_of(removed_.begin(), removed_.end(),
                                  [&](const auto& removed) { return removed.second == &each; });
    if (!gone && KindOf(each.item) == standing.kind && UidOf(each.item).empty()) ++standing.rank;
  }
  return standing;
}

// What has become of the items.
void FilePass::Report() {
  if (changed_.empty()) return;
  const DeskReading now = ReadDeskBytes(file_, text_.bytes(), place_.zone);
  std::map<std::pair<ItemKind, std::string_view>, std::vector<const DeskItem*>> standing;
  for (const DeskItem& each : now.items) {
    standing[{KindOf(each.item), UidOf(each.item)}].push_back(&each);
  }
  for (const auto& [outcome, item] : changed_) {
    const Standing was = StandingOf(*item);
    const auto found = standing.find({was.kind, was.uid});
    if (found == standing.end() || found->second.size() <= was.rank) continue;
    outcome->item.line = found->second[was.rank]->line;
    outcome->item.item = found->second[was.rank]->item;
  }
}

}  // namespace

void EditDeskFile(const DeskPlace& place, const fs::path& file, std::vector<FileWish> wishes) {
  while (!wishes.empty()) wishes = FilePass(place, file).Carry(wishes);
}

}  // namespace desktop
