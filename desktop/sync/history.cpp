#include "desktop/sync/history.h"

#include <fmt/chrono.h>
#include <fmt/format.h>

#include <algorithm>
#include <cstdint>
#include <nlohmann/json.hpp>
#include <set>
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

std::string AboutText(const SavedRun& run) {
  json about = {{"what", run.what}, {"kinds", json::array()}};
  for (const ItemKind kind : run.kinds) about["kinds"].push_back(static_cast<int>(kind));
  return about.dump(1, ' ', false, json::error_handler_t::replace) + "\n";
}

ItemKind KindFrom(const json& number) {
  const std::int64_t kind = number.is_number_integer() ? number.get<std::int64_t>() : -1;
  if (kind < 0 || kind > static_cast<int>(ItemKind::kTask)) {
    throw Error(fmt::format("a kind of {}", number.dump()));
  }
  return static_cast<ItemKind>(kind);
}

void WritePrivate(const fs::path& path, std::string_view bytes) {
  files::MakePrivateDirectories(path.parent_path());
  files::AtomicFile file(path, files::Access::kPrivate);
  file.Write(bytes);
  file.Commit();
}

void WriteHandheld(const fs::path& path, const Sides& sides) {
  files::AtomicFile handheld(path, files::Access::kPrivate);
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
}

// What has no place in the history yet, be it of a run that was killed.
void RemoveUnfinished(const fs::path& root) {
  std::error_code error;
  for (const auto& entry : fs::directory_iterator(root, error)) {
    if (entry.path().filename().string().starts_with('.')) fs::remove_all(entry.path(), error);
  }
}

}  // namespace

History::History(fs::path root) : root_(std::move(root)) {}

DeskHistory History::Desk() const {
  return DeskHistory(DeskPath(), Database::Open::kExisting);
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
    SavedRun run{name, {}, {}};
    try {
      const json about = json::parse(files::ReadWholeFile(entry.path() / kAbout));
      run.what = about.at("what").get<std::string>();
      for (const json& kind : about.at("kinds")) {
        run.kinds.push_back(KindFrom(kind));
      }
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

void History::Save(const SavedRun& run, const DeskFolder& folder, const Sides& sides,
                   const fs::path& memory) const {
  const fs::path beside = root_ / ("." + run.time);
  RemoveUnfinished(root_);
  try {
    files::MakePrivateDirectories(beside);
    DeskHistory(DeskPath(), Database::Open::kNew).Save(run.time, folder);
    WriteHandheld(beside / "handheld.xml", sides);
    WritePrivate(beside / "memory.db", files::ReadWholeFile(memory));
    WritePrivate(beside / kAbout, AboutText(run));
    std::error_code error;
    fs::rename(beside, root_ / run.time, error);
    if (error) throw Error(fmt::format("cannot write {}: {}", beside.string(), error.message()));
  } catch (...) {
    RemoveUnfinished(root_);
    throw;
  }
  files::SyncDirectoryOf(root_ / run.time);
}

void History::Forget(const std::string& time) const {
  std::error_code error;
  fs::remove_all(root_ / time, error);
}

void History::Prune(Time now) const {
  const std::vector<SavedRun> runs = Runs();
  if (runs.size() <= kLastRuns) return;
  const std::string oldest = TimeName(now - kYear);
  std::set<std::string> months;
  std::set<std::string> kept;
  for (std::size_t i = 0; i < runs.size(); ++i) {
    const std::string& time = runs[i].time;
    const bool isLast = runs.size() - i <= kLastRuns;
    if (isLast || (time >= oldest && months.insert(time.substr(0, 7)).second)) kept.insert(time);
  }
  Desk().Keep(kept);
  for (const SavedRun& run : runs) {
    std::error_code error;
    if (!kept.contains(run.time)) fs::remove_all(root_ / run.time, error);
  }
}

}  // namespace desktop
