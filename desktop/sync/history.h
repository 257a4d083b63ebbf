// What both sides had before runs changed anything: FOLDER/.corvane/history/TIME/.
//
// A run saves all files of the desk, all that the handheld had of the kinds concerned, and what was
// remembered.
#pragma once

#include <chrono>
#include <filesystem>
#include <string>
#include <vector>

#include "desktop/folder/desk_folder.h"
#include "desktop/sync/desk_history.h"
#include "desktop/sync/memory.h"
#include "desktop/sync/sides.h"

namespace desktop {

struct SavedRun {
  std::string time;  // "2026-11-22T09-46-50Z", which sorts; the directory's name
  std::string what;  // for people
  std::vector<ItemKind> kinds;
};

class History {
 public:
  using Time = std::chrono::sys_seconds;

  // Touches nothing yet.
  explicit History(std::filesystem::path root);

  // Those that are whole, the oldest first.
  [[nodiscard]] std::vector<SavedRun> Runs() const;

  // A time for the run that begins now: later than those of all others.
  [[nodiscard]] std::string NewTime(Time now) const;

  // It is there as a whole or not at all. Throws Error.
  void Save(const SavedRun& run, const DeskFolder& folder, const Sides& sides,
            const std::filesystem::path& memory) const;

  // Of a run that has changed nothing, so that it takes no other's place.
  void Forget(const std::string& time) const;

  // Keeps the last ten, and of those before one a month for a year.
  void Prune(Time now) const;

  // What the runs have saved of the desk. Throws Error when there is nothing.
  [[nodiscard]] DeskHistory Desk() const;
  // Where a run's other parts are.
  [[nodiscard]] std::filesystem::path HandheldOf(const std::string& time) const;
  [[nodiscard]] std::filesystem::path MemoryOf(const std::string& time) const;

 private:
  [[nodiscard]] std::filesystem::path DeskPath() const { return root_ / "desk.db"; }

  std::filesystem::path root_;
};

}  // namespace desktop
