// Does what a plan says, in an order in which any moment may be the last: the next run finds what
// has been done by then, and does the rest.
//
//   1. what will be made files of is noted; new files are made
//   2. the handheld gets additions and changes, then deletions
//   3. files are changed and removed
//   4. what the handheld now has is read back, and all of it is remembered
#pragma once

#include <cstddef>
#include <functional>
#include <map>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "common/calendar/zone.h"
#include "desktop/folder/desk_folder.h"
#include "desktop/sync/memory.h"
#include "desktop/sync/plan.h"
#include "desktop/sync/sides.h"
#include "desktop/transfer/mapping.h"
#include "desktop/transfer/push_recovery.h"
#include "desktop/transfer/push_session.h"
#include "desktop/wire/connection.h"

namespace desktop {

// Called before each step, with what it is; what it throws ends the run there.
using StepHook = std::function<void(std::string_view step)>;

struct ActionResult {
  bool done = false;
  std::string problem;              // why it is not, or not all of it
  std::vector<std::string> losses;  // what a side could not take, a line each
};

class Execution {
 public:
  struct Means {
    const ConnectionOptions& connection;
    const DeskFolder& folder;
    const std::filesystem::path trash;
    Memory& memory;
    Mapping& mapping;
    PushRecovery& recovery;
    const calendar::Zone& zone;
    StepHook hook;  // may be empty
  };

  // All must outlive this object.
  Execution(const Means& means, const Plan& plan, const Sides& sides, const DeskParts& parts);

  // Throws Error when it cannot go on. What was done by then stands in the results.
  void Run();

  [[nodiscard]] const std::vector<ActionResult>& results() const { return results_; }
  // Whether anything was done to a side.
  [[nodiscard]] bool begun() const;
  // Whether anything can have been done to one, be it unheard of.
  [[nodiscard]] bool started() const { return started_; }
  // Notes beside the items to be remembered with them.
  void Remember(std::map<std::string, std::string> notes) { notes_ = std::move(notes); }

 private:
  struct Progress {
    std::optional<DeskItem> desk;          // as it now is there
    std::optional<HandheldItem> handheld;  // as it came back
    Oid oid = 0;
    bool failed = false;
  };

  void Step(std::string_view what) const;
  void Fail(std::size_t action, std::string problem);
  [[nodiscard]] bool IsOpen(std::size_t action) const { return !progress_[action].failed; }
  [[nodiscard]] std::string KeyOf(std::size_t action) const;

  void NoteIntents();
  void AddToDesk();
  void SendToHandheld();
  std::vector<std::size_t> StillToDelete();
  void TakeSent(std::size_t action, const PushResult& result);
  void EditDesk();
  void ReadBack();
  void TakeBack(std::size_t action, HandheldItem item);
  void RememberAll();
  void RememberPlaces(Memory::Changes& changes, const DeskFiles& desk) const;
  void RememberAction(Memory::Changes& changes, std::size_t action);
  [[nodiscard]] FileStamps StampsOf(const DeskFiles& desk) const;
  void ForgetMapping();

  const Means& means_;
  const Plan& plan_;
  const Sides& sides_;
  const DeskParts parts_;
  std::map<std::string, std::string> notes_;
  std::vector<Progress> progress_;     // an entry an action
  std::vector<ActionResult> results_;  // as well
  bool started_ = false;
};

}  // namespace desktop
