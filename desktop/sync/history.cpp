#include "desktop/sync/history.h"

#include <fmt/chrono.h>
#include <fmt/format.h>

#include <algorithm>
#include <nlohmann/json.hpp>
#include <system_error>
#include <utility>

#include "common/files/atomic_file.h"
#include "desktop/wire/error.h"

namespace desktop {
namespace {

namespace fs = std::filesystem;
using nlohmann::json;

constexpr std::size_t kLastRuns = 10;
constexpr std::chrono::days kYear{366};
constexpr char kAbout[] = "about.json";

std::string TimeName(History::Time time) {
  return fmt::format("{:%Y-%m-%dT%H-%M-%S}Z", fmt::gmtime(time.time_since_epoch().count()));
}

void WritePrivate(const fs::path& path, std::string_view bytes) {
  files::MakePrivateDirectories(path.parent_path());
  files::AtomicFile file(path, files::Access::kPrivate);
  file.Write(bytes);
  file.Commit();
}

}  // namespace

History::History(fs::path root) : root_(std::move(root)) {}

fs::path History::DeskOf(const std::string& time) const {
  return root_ / time / "desk";
}

fs::path History::HandheldOf(const std::string& time) const {
  return root_ / time / "handheld.xml";
}

fs::path History::MemoryOf(const std::string& time) const {
  return root_ / time / "memory.db";
}

std::vector<SavedRun> History::Runs() const {
  std::vector<SavedRun> runs;
  std::error_code error;
  for (const auto& entry : fs::directory_iterator(root_, error)) {
    const std::string name = entry.path().filename().string();
    if (name.starts_with('.') || !fs::exists(entry.path() / kAbout, error)) continue;
    SavedRun run{name, {}, {}, {}};
    try {
      const json about = json::parse(files::ReadWholeFile(entry.path() / kAbout));
      run.what = about.at("what").get<std::string>();
      for (const json& kind : about.at("kinds")) {
        run.kinds.push_back(static_cast<ItemKind>(kind.get<int>()));
      }
      about.at("created").get_to(run.created);
    } catch (const std::exception& problem) {
      throw Error(fmt::format("{} cannot be understood: {}", (entry.path() / kAbout).string(),
                              problem.what()));
    }
    runs.push_back(std::move(run));
  }
  std::ranges::sort(runs, {}, &SavedRun::time);
  return runs;
}

std::string History::NewTime(Time now) const {
  const std::vector<SavedRun> runs = Runs();
  std::string time = TimeName(now);
  if (runs.empty() || runs.back().time < time) return time;
  // Within one second of another, or by a clock that has been set back.
  const std::string last = runs.back().time;
  const std::size_t sign = last.find('.');
  const int number = sign == std::string::npos ? 0 : std::stoi("0" + last.substr(sign + 1));
  return fmt::format("{}.{:04}", last.substr(0, sign), number + 1);
}

void History::WriteAbout(const SavedRun& run, const fs::path& directory) const {
  json about = {{"what", run.what}, {"kinds", json::array()}, {"created", run.created}};
  for (const ItemKind kind : run.kinds) about["kinds"].push_back(static_cast<int>(kind));
  WritePrivate(directory / kAbout,
               about.dump(1, ' ', false, json::error_handler_t::replace) + "\n");
}

void History::Save(const SavedRun& run, const fs::path& folder,
                   const std::set<std::string>& touched, const Sides& sides,
                   const fs::path& memory) const {
  const fs::path beside = root_ / ("." + run.time);
  std::error_code error;
  fs::remove_all(beside, error);
  files::MakePrivateDirectories(beside);
  for (const std::string& name : touched) {
    if (!fs::exists(folder / name, error)) continue;
    WritePrivate(beside / "desk" / name, files::ReadWholeFile(folder / name));
  }
  files::AtomicFile handheld(beside / "handheld.xml", files::Access::kPrivate);
  handheld.Write("<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n<root>\n");
  for (const auto& [kind, items] : sides.handheld) {
    for (const HandheldItem& item : items) {
      if (item.unreadable) continue;
      handheld.Write(item.record);
      handheld.Write("\n");
    }
  }
  handheld.Write("</root>\n");
  handheld.Commit();
  WritePrivate(beside / "memory.db", files::ReadWholeFile(memory));
  WriteAbout(run, beside);
  fs::rename(beside, root_ / run.time, error);
  if (error) throw Error(fmt::format("cannot write {}: {}", beside.string(), error.message()));
  files::SyncDirectoryOf(root_ / run.time);
}

void History::TakeOver(const SavedRun& from, SavedRun& to) const {
  std::error_code error;
  const fs::path desk = DeskOf(from.time);
  for (const auto& entry : fs::recursive_directory_iterator(desk, error)) {
    if (!entry.is_regular_file(error)) continue;
    const fs::path name = fs::relative(entry.path(), desk);
    const bool known = fs::exists(DeskOf(to.time) / name, error) || to.created.contains(name);
    if (!known) WritePrivate(DeskOf(to.time) / name, files::ReadWholeFile(entry.path()));
  }
  for (const std::string& name : from.created) {
    if (!fs::exists(DeskOf(to.time) / name, error)) to.created.insert(name);
  }
  WriteAbout(to, root_ / to.time);
}

void History::Prune(Time now) const {
  std::vector<SavedRun> runs = Runs();
  if (runs.size() <= kLastRuns) return;
  const std::string oldest = TimeName(now - kYear);
  std::set<std::string> months;
  std::vector<SavedRun> kept;  // of those before the last ten
  runs.resize(runs.size() - kLastRuns);
  for (SavedRun& run : runs) {
    const bool keep = run.time >= oldest && months.insert(run.time.substr(0, 7)).second;
    if (keep) {
      kept.push_back(std::move(run));
      continue;
    }
    if (!kept.empty()) TakeOver(run, kept.back());
    std::error_code error;
    fs::remove_all(root_ / run.time, error);
  }
}

}  // namespace desktop
