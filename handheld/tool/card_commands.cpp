#include "handheld/tool/card_commands.h"

#include <fmt/core.h>

#include <algorithm>
#include <tuple>

#include "common/files/atomic_file.h"
#include "common/files/error.h"
#include "common/text/unicode.h"
#include "handheld/system/device_path.h"
#include "handheld/system/directories.h"
#include "handheld/tool/result.h"
#include "handheld/tool/table.h"
#include "platform/find_files.h"

namespace tool {
namespace {

namespace fs = std::filesystem;

bool IsCardName(const std::string& name) {
  const auto text = text::FromUtf8(name);
  return text && text->find_first_of(u"\\/") == text->npos && ce::host::IsDeviceFileName(*text);
}

std::u16string Folded(const std::string& name) {
  return text::Fold(text::FromUtf8Lossy(name));
}

// Whether a card of this directory would lead to the handheld's own files.
bool Holds(const fs::path& directory, const fs::path& files) {
  return std::mismatch(directory.begin(), directory.end(), files.begin(), files.end()).first ==
         directory.end();
}

bool IsTaken(ce::host::Handheld& handheld, const std::string& name) {
  for (const fs::directory_entry& entry : fs::directory_iterator(handheld.filesRoot()))
    if (Folded(entry.path().filename().string()) == Folded(name)) return true;
  return false;
}

// As the device sees them.
std::vector<ce::host::DirectoryEntry> EntriesOf(ce::host::Handheld& handheld) {
  ce::host::UniqueFd root;
  std::vector<ce::host::DirectoryEntry> entries;
  ce::DWORD error = ce::host::OpenFilesRoot(root);
  if (error == 0) error = ce::host::ListDirectory(root, true, entries);
  if (error != 0)
    throw files::Error(
        fmt::format("{}: cannot be listed: code {}", handheld.filesRoot().string(), error));
  return entries;
}

}  // namespace

std::vector<Card> ListCards(ce::host::Handheld& handheld) {
  std::vector<Card> cards;
  std::error_code none;
  for (const ce::host::DirectoryEntry& entry : EntriesOf(handheld)) {
    if ((entry.attributes & ce::FILE_ATTRIBUTE_TEMPORARY) == 0) continue;
    const std::string name = text::ToUtf8Lossy(entry.name);
    cards.push_back({name, fs::read_symlink(handheld.filesRoot() / name, none), true});
  }
  for (const fs::directory_entry& entry : fs::directory_iterator(handheld.filesRoot())) {
    if (!entry.is_symlink(none) || entry.exists(none)) continue;
    const std::string name = entry.path().filename().string();
    if (IsCardName(name)) cards.push_back({name, fs::read_symlink(entry.path(), none), false});
  }
  std::sort(cards.begin(), cards.end(), [](const Card& a, const Card& b) {
    return std::make_tuple(Folded(a.name), a.name) < std::make_tuple(Folded(b.name), b.name);
  });
  return cards;
}

Json AsJson(const Card& card) {
  return {{"name", card.name}, {"directory", card.target.string()}, {"present", card.present}};
}

Outcome AddCard(Session& session, const std::string& name, const fs::path& target,
                const Report& report) {
  ce::host::Handheld& handheld = session.handheld();
  if (!IsCardName(name))
    throw UsageError(fmt::format("{}: a handheld cannot have a card of this name", name));
  if (IsTaken(handheld, name))
    throw UsageError(fmt::format("{}: the handheld has something of this name already", name));
  std::error_code none;
  if (!fs::is_directory(target, none))
    throw UsageError(fmt::format("{} is no directory", target.string()));
  const fs::path directory = fs::canonical(target);
  if (Holds(directory, fs::canonical(handheld.filesRoot())))
    throw UsageError(fmt::format("{} holds the handheld itself", target.string()));
  const fs::path link = handheld.filesRoot() / name;
  fs::create_directory_symlink(directory, link);
  files::SyncDirectoryOf(link);
  TellResult(report, {{"name", name}, {"directory", directory.string()}}, "{} -> {}\n", name,
             directory.string());
  return Outcome::kDone;
}

Outcome RemoveCard(Session& session, const std::string& name, const Report& report) {
  for (const Card& card : ListCards(session.handheld())) {
    if (Folded(card.name) != Folded(name)) continue;
    if (card.target.empty())
      throw UsageError(fmt::format("{} is a mounted volume; it goes when it is unmounted", name));
    const fs::path link = session.handheld().filesRoot() / card.name;
    fs::remove(link);
    files::SyncDirectoryOf(link);
    TellResult(report, {{"removed", card.name}}, "removed {}\n", card.name);
    return Outcome::kDone;
  }
  Tell(report.err, "corvane-device: {}: no such card\n", name);
  return Outcome::kFailed;
}

Outcome ShowCards(Session& session, const Report& report) {
  const std::vector<Card> cards = ListCards(session.handheld());
  if (report.json) {
    for (const Card& card : cards) TellJson(report, AsJson(card));
    return Outcome::kDone;
  }
  for (const Card& card : cards)
    Tell(report.out, "{} -> {}{}\n", card.name,
         card.target.empty() ? "a mounted volume" : card.target.string(),
         card.present ? "" : "  (taken out)");
  Tell(report.out, "{}\n", Counted(cards.size(), "card"));
  return Outcome::kDone;
}

}  // namespace tool
