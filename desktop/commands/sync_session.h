// What one synchronisation says while it runs, and asks.
#pragma once

#include <set>
#include <string>

#include "desktop/commands/commands_sync.h"
#include "desktop/commands/sync_targets.h"

namespace desktop {

class SyncSession {
 public:
  // The others must outlive this object. With a headline, what is said stands below it. In a watch
  // a run says nothing when there is nothing new: what the one before has told is not told again.
  SyncSession(SyncTarget target, const SyncCommand& command, const Console& console,
              std::string headline);

  // Failures are told, but for one that is Interrupted. May be called again.
  int Run();
  // Of the last run, on one line.
  [[nodiscard]] const std::string& json() const { return json_; }
  void Tell(const std::string& line);

 private:
  [[nodiscard]] bool IsTalking() const { return !command_.json && !command_.quiet; }
  void Head();
  // Whether the run before this one has not told it.
  bool IsNews(const std::string& line);
  void Say(const std::string& line);
  void TellFailure(const std::string& problem);
  void Show(const SyncPlan& plan);
  int ShowResults(const SyncPlan& plan, const SyncResults& results);
  ConflictAnswer Ask(const ConflictQuestion& question);

  SyncTarget target_;
  const SyncCommand& command_;
  const Console& console_;
  std::string headline_;
  bool headed_ = false;
  bool said_ = false;
  bool failedBefore_ = true;  // the last run, or there was none
  std::set<std::string> told_;
  std::set<std::string> toldBefore_;
  std::string json_;
};

}  // namespace desktop
