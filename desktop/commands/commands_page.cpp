#include "desktop/commands/commands_page.h"

#include <fmt/format.h>

#include <algorithm>
#include <chrono>
#include <functional>
#include <string>
#include <string_view>
#include <utility>
#include <variant>
#include <vector>

#include "common/files/atomic_file.h"
#include "common/files/error.h"
#include "common/formats/json/message_json.h"
#include "common/page/page_file.h"
#include "common/phone/phone_numbers.h"
#include "common/text/text.h"
#include "desktop/commands/result.h"
#include "desktop/commands/sync_targets.h"
#include "desktop/folder/desk_folder.h"
#include "desktop/folder/plain_file.h"
#include "desktop/sync/remembered_place.h"
#include "desktop/wire/error.h"

namespace desktop {
namespace {

namespace fs = std::filesystem;

using page::Contents;

void AddItem(Item item, Contents& contents) {
  if (auto* const contact = std::get_if<formats::Contact>(&item)) {
    contents.people.push_back(std::move(*contact));
  } else if (auto* const task = std::get_if<formats::Task>(&item)) {
    contents.tasks.push_back(std::move(*task));
  } else {
    contents.appointments.push_back(std::get<formats::Appointment>(std::move(item)));
  }
}

void AddItems(const fs::path& folder, const calendar::Zone& zone, Contents& contents) {
  DeskContents desk = DeskFolder(folder, zone).Read({}, {});
  for (auto& [name, file] : desk.files)
    for (DeskItem& each : file.items) AddItem(std::move(each.item), contents);
  for (const DeskNotice& notice : desk.notices)
    if (notice.trouble == DeskTrouble::kLeftAlone) contents.remarks.push_back(ToText(notice));
}

// The files of an archive, a month each, by their names; none when there is no such folder.
std::vector<fs::path> ArchiveFiles(const fs::path& folder) {
  std::vector<fs::path> files;
  std::error_code error;
  fs::directory_iterator entry(folder, error);
  for (const fs::directory_iterator end; !error && entry != end; entry.increment(error))
    if (entry->path().extension() == ".jsonl") files.push_back(entry->path());
  if (error && error != std::errc::no_such_file_or_directory)
    throw Error(fmt::format("cannot read {}: {}", folder.string(), error.message()));
  std::ranges::sort(files);
  return files;
}

void AddArchive(const fs::path& root, const char* subfolder, const formats::ItemSink& sink,
                Contents& contents) {
  for (const fs::path& file : ArchiveFiles(root / subfolder)) {
    const std::string name = fs::relative(file, root).string();
    try {
      for (const formats::Notice& notice : formats::ReadJsonLines(ReadPlainFile(file).bytes, sink))
        contents.remarks.push_back(fmt::format("{}:{}: {}", name, notice.line, notice.text));
    } catch (const files::Error& error) {
      contents.remarks.push_back(fmt::format("{}: {}", name, error.what()));
    }
  }
}

calendar::Zone ZoneOf(const SyncOptions& sync, const RememberedPlace& known,
                      const Console& console) {
  if (sync.zone) return *sync.zone;
  if (const auto zone = calendar::Zone::Find(known.zone); zone && !known.zone.empty()) return *zone;
  calendar::Zone zone = calendar::Zone::OfHost();
  console.err << fmt::format(
      "the handheld is taken to be in this computer's time zone, {}: --zone says otherwise\n",
      zone.name());
  return zone;
}

std::string CountryOf(const SyncOptions& sync, const RememberedPlace& known) {
  if (sync.country) return *sync.country;
  return known.country.empty() ? phone::PhoneNumbers::CountryOfHost() : known.country;
}

Contents ReadFolder(const SyncOptions& sync, const Console& console) {
  const fs::path& folder = sync.folder;
  if (!fs::is_directory(folder)) throw Error(folder.string() + " is no folder");
  const RememberedPlace known = RecallPlace(folder);
  const calendar::Zone zone = ZoneOf(sync, known, console);
  const auto now = std::chrono::floor<std::chrono::seconds>(std::chrono::system_clock::now());
  const fs::path whole = fs::absolute(folder).lexically_normal();
  Contents contents{
      .name = (whole.has_filename() ? whole : whole.parent_path()).filename().string(),
      .country = CountryOf(sync, known),
      .zone = zone,
      .now = zone.ToLocal(now),
  };
  AddItems(folder, zone, contents);
  formats::ItemSink sink;
  sink.message = [&](const auto& message, std::size_t) { contents.messages.push_back(message); };
  sink.call = [&](const auto& call, std::size_t) { contents.calls.push_back(call); };
  AddArchive(folder, "messages", sink, contents);
  AddArchive(folder, "calls", sink, contents);
  return contents;
}

void Write(const Contents& contents, const PageCommand& command, const Console& console) {
  if (!command.output) {
    page::WritePage(contents, [&](std::string_view piece) { console.out << piece; });
    FlushOutput(console);
  } else {
    files::AtomicFile file(*command.output);
    page::WritePage(contents, [&](std::string_view piece) { file.Write(piece); });
    file.Commit();
    const std::string name = command.output->string();
    TellResult(console, {{"file", name}},
               fmt::format("{}: a page, to be opened in any browser", name));
  }
}

}  // namespace

int MakePage(const ConnectionOptions& connection, const PlaceOptions& place,
             const PageCommand& command, const Console& console) {
  return RunGuarded(console, [&] {
    const SyncTarget target = TargetOf(command.what, connection, place, {}, console);
    const Contents contents = ReadFolder(target.sync, console);
    Write(contents, command, console);
    for (const std::string& remark : contents.remarks) console.err << text::Shown(remark) << '\n';
    return contents.remarks.empty() ? kDone : kPartlyDone;
  });
}

}  // namespace desktop
