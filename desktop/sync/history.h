// What both sides had before runs changed anything: FOLDER/.corvane/history/TIME/.
//
// A run saves the files of the desk that it is about to change or remove, all that the handheld
// had of the kinds concerned, and what was remembered. So the state before a run is that of its
// files, else those of the next later run that has them, else what is there.
#pragma once

#include <chrono>
#include <filesystem>
#include <set>
#include <string>
#include <vector>

#include "desktop/sync/memory.h"
#include "desktop/sync/sides.h"

namespace desktop {

struct SavedRun {
  std::string time;  // "2026-11-22T09-46-50Z", which sorts; the directory's name
  std::string what;  // for people
  std::vector<ItemKind> kinds;
  std::set<std::string> created;  // files of the desk that the run was about to make
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

  // It is there as a whole or not at all. `touched` are files below the folder, which need not be
  // there. Throws Error.
  void Save(const SavedRun& run, const std::filesystem::path& folder,
            const std::set<std::string>& touched, const Sides& sides,
            const std::filesystem::path& memory) const;

  // Keeps the last ten, and of those before one a month for a year. What a run has that goes is
  // taken over by the one before it.
  void Prune(Time now) const;

  // Where a run's parts are.
  [[nodiscard]] std::filesystem::path DeskOf(const std::string& time) const;
  [[nodiscard]] std::filesystem::path HandheldOf(const std::string& time) const;
  [[nodiscard]] std::filesystem::path MemoryOf(const std::string& time) const;

 private:
  void WriteAbout(const SavedRun& run, const std::filesystem::path& directory) const;
  void TakeOver(const SavedRun& from, SavedRun& to) const;

  std::filesystem::path root_;
};

}  // namespace desktop
