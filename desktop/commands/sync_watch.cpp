#include "desktop/commands/sync_watch.h"

#include <fmt/format.h>
#include <poll.h>

#include <algorithm>
#include <cerrno>
#include <cstdint>
#include <cstring>
#include <memory>
#include <optional>
#include <utility>

#include "desktop/commands/console.h"
#include "desktop/folder/folder_watch.h"
#include "desktop/wire/error.h"

namespace desktop {
namespace {

using WatchClock = std::chrono::steady_clock;

// Programs write several files at a time, and some write one file twice.
constexpr std::chrono::milliseconds kSettled{300};
constexpr std::chrono::milliseconds kMostSettling{5000};
// Between runs that find the folder changed each time, without anything in between.
constexpr std::chrono::seconds kBetweenUnquietRuns{10};

class PlaceWatch {
 public:
  explicit PlaceWatch(WatchedPlace place) : place_(std::move(place)) {}

  [[nodiscard]] bool changed() const { return changed_; }
  [[nodiscard]] WatchClock::time_point due() const { return due_; }
  [[nodiscard]] bool IsDue() const { return changed_ || due_ <= WatchClock::now(); }
  [[nodiscard]] pollfd Poll() const { return {folder_ ? folder_->fd() : -1, POLLIN, 0}; }
  [[nodiscard]] int status() const { return failed_ && did_ ? kPartlyDone : status_; }

  // Throws Interrupted.
  void Run(std::chrono::seconds every) {
    Watch();
    TakeChanges();
    const bool afterRun = std::exchange(afterRun_, false);
    changed_ = false;
    status_ = place_.run();
    failed_ = status_ == kFailed;
    did_ = did_ || !failed_;
    due_ = WatchClock::now() + every;
    const bool isNew = Watch();
    if ((!TakeChanges() && !isNew) || failed_) return;
    if (afterRun) {
      due_ = std::min(due_, WatchClock::now() + kBetweenUnquietRuns);
    }
    changed_ = !afterRun;
    afterRun_ = true;
  }

  // Whether there was one.
  bool NoteChanges() {
    if (!TakeChanges()) return false;
    afterRun_ = afterRun_ && changed_;
    changed_ = true;
    return true;
  }

 private:
  bool TakeChanges() { return folder_ && folder_->TakeChanges(); }

  // Whether there is more to watch than before.
  bool Watch() {
    try {
      if (!folder_) folder_.emplace(place_.folder, place_.parts);
      return folder_->Watch();
    } catch (const Error& problem) {
      place_.tell(fmt::format("{}; it is looked at from time to time alone", problem.what()));
      return false;
    }
  }

  const WatchedPlace place_;
  std::optional<FolderWatch> folder_;
  WatchClock::time_point due_ = WatchClock::now();
  bool changed_ = false;
  bool afterRun_ = false;  // what has changed may be what a run has written
  int status_ = kFailed;
  bool failed_ = true;
  bool did_ = false;
};

class Watcher {
 public:
  Watcher(std::vector<WatchedPlace> places, const WatchOptions& options) : options_(options) {
    for (WatchedPlace& each : places) {
      places_.push_back(std::make_unique<PlaceWatch>(std::move(each)));
    }
  }

  std::vector<int> Run() {
    try {
      for (;;) {
        for (const auto& place : places_) {
          if (!place->IsDue()) continue;
          if (IsInterrupted(0)) throw Interrupted();
          place->Run(options_.every);
        }
        Wait();
      }
    } catch (const Interrupted&) {
    }
    std::vector<int> codes;
    for (const auto& place : places_) codes.push_back(place->status());
    return codes;
  }

 private:
  // Until one is due, and has settled.
  void Wait() {
    std::optional<WatchClock::time_point> settledBy;
    for (;;) {
      auto end = places_.front()->due();
      bool changed = false;
      for (const auto& place : places_) {
        end = std::min(end, place->due());
        changed = changed || place->changed();
      }
      const auto now = WatchClock::now();
      if (changed) {
        if (!settledBy) settledBy = now + kMostSettling;
        end = std::min(*settledBy, now + kSettled);
      } else if (options_.onWait) {
        options_.onWait();
      }
      const auto left = std::chrono::ceil<std::chrono::milliseconds>(end - now);
      if (left.count() <= 0) return;
      if (IsInterrupted(static_cast<int>(std::min<std::int64_t>(left.count(), 1 << 30)))) {
        throw Interrupted();
      }
      bool more = false;
      for (const auto& place : places_) more = place->NoteChanges() || more;
      if (!more && WatchClock::now() >= end) return;
    }
  }

  // Waits so long for that, or for a change.
  [[nodiscard]] bool IsInterrupted(int milliseconds) const {
    std::vector<pollfd> watched{{options_.interruptFd, POLLIN, 0}};
    if (milliseconds > 0) {
      for (const auto& place : places_) watched.push_back(place->Poll());
    }
    const int count = poll(watched.data(), watched.size(), milliseconds);
    if (count < 0 && errno != EINTR) {
      throw Error(fmt::format("cannot wait: {}", std::strerror(errno)));
    }
    return count > 0 && watched.front().revents != 0;
  }

  const WatchOptions& options_;
  std::vector<std::unique_ptr<PlaceWatch>> places_;
};

}  // namespace

std::vector<int> WatchPlaces(std::vector<WatchedPlace> places, const WatchOptions& options) {
  return Watcher(std::move(places), options).Run();
}

}  // namespace desktop
