// What one synchronisation says while it runs, and asks.
#pragma once

#include <string>

#include "desktop/commands/commands_sync.h"
#include "desktop/commands/sync_targets.h"

namespace desktop {

class SyncSession {
 public:
  // The others must outlive this object. With a headline, what is said stands below it.
  SyncSession(SyncTarget target, const SyncCommand& command, const Console& console,
              std::string headline);

  // Failures are told, but for one that is Interrupted. May be called again.
  int Run();
  // Of the last run; empty when the sides could not be read and there is no headline.
  [[nodiscard]] const std::string& json() const { return json_; }

 private:
  [[nodiscard]] bool IsTalking() const { return !command_.json && !command_.quiet; }
  void Head();
  void Say(const std::string& line);
  void Tell(const std::string& line);
  void TellFailure(const std::string& problem);
  void Show(const SyncPlan& plan);
  int ShowResults(const SyncPlan& plan, const SyncResults& results);
  ConflictAnswer Ask(const ConflictQuestion& question);

  SyncTarget target_;
  const SyncCommand& command_;
  const Console& console_;
  std::string headline_;
  bool headed_ = false;
  std::string json_;
};

}  // namespace desktop
