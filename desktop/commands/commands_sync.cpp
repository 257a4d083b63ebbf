#include "desktop/commands/commands_sync.h"

#include <fmt/format.h>

#include <algorithm>
#include <string>

#include "common/text/text.h"
#include "desktop/commands/sync_report.h"
#include "desktop/wire/error.h"

namespace desktop {
namespace {

constexpr std::string_view kNothing = "(nothing)";

std::string_view Shown(const std::string& value) {
  return value.empty() ? kNothing : std::string_view(value);
}

class SyncSession {
 public:
  SyncSession(const ConnectionOptions& connection, const SyncCommand& command,
              const Console& console)
      : connection_(connection), command_(command), console_(console), options_(command.sync) {
    if (console.inIsTerminal) {
      options_.ask = [this](const ConflictQuestion& question) { return Ask(question); };
    }
  }

  int Run() {
    int code = kFailed;
    Synchronise(connection_, options_,
                {[this](const SyncPlan& plan) { Show(plan); },
                 [&](const SyncPlan& plan, const SyncResults& results) {
                   code = ShowResults(plan, results);
                 }});
    FlushOutput(console_);
    return code;
  }

 private:
  [[nodiscard]] bool IsTalking() const { return !command_.json && !command_.quiet; }

  void Say(const std::string& line) const { console_.out << text::Shown(line) << '\n'; }
  void Tell(const std::string& line) const { console_.err << text::Shown(line) << '\n'; }

  void Show(const SyncPlan& plan) const {
    if (!command_.quiet) {
      for (const std::string& notice : plan.notices) Tell(notice);
      for (const std::string& line : NoticeLines(plan.deskNotices, command_.verbose)) Tell(line);
    }
    for (const std::string& notice : plan.items.notices) Tell(notice);
    if (!IsTalking()) return;
    for (const Action& action : plan.items.actions) {
      if (const std::string line = ToText(action); !line.empty()) Say(line);
    }
    for (const ArchiveAddition& addition : plan.archive) Say(ToText(addition));
    console_.out << std::flush;
  }

  int ShowResults(const SyncPlan& plan, const SyncResults& results) const {
    for (std::size_t i = 0; i < results.items.size(); ++i) {
      const Action& action = plan.items.actions[i];
      if (results.items[i].problem.empty()) continue;
      Tell(fmt::format("{} {}: {}", NameOf(action.kind), action.name, results.items[i].problem));
    }
    if (!command_.quiet) {
      for (const std::string& line : LossLines(plan.items, results, command_.verbose)) Tell(line);
    }
    if (!results.problem.empty()) TellProblem(console_, results.problem);
    if (IsTalking() && plan.items.stop.empty()) Say(ToText(results.counts));
    if (command_.json) {
      console_.out << SyncToJson(plan, results, options_.dryRun) << '\n';
    }
    if (!results.problem.empty()) return results.begun ? kPartlyDone : kFailed;
    return results.whole ? kDone : kPartlyDone;
  }

  ConflictAnswer Ask(const ConflictQuestion& question) const {
    Tell(
        fmt::format("{} {} has been changed on both sides:", NameOf(question.kind), question.name));
    std::size_t widest = 0;
    for (const FieldConflict& each : question.conflicts) {
      widest = std::max(widest, each.field.size());
    }
    for (const FieldConflict& each : question.conflicts) {
      Tell(fmt::format("  {:{}}  desk: {}  |  handheld: {}", each.field, widest, Shown(each.desk),
                       Shown(each.handheld)));
    }
    for (;;) {
      console_.err << "Take [d]esk, [h]andheld, keep [b]oth, or [l]eave it? " << std::flush;
      const std::string answer = ReadAnswer(console_, connection_.interruptFd);
      if (answer == "d") return ConflictAnswer::kDesk;
      if (answer == "h") return ConflictAnswer::kHandheld;
      if (answer == "b") return ConflictAnswer::kKeepBoth;
      if (answer == "l" || !console_.in) return ConflictAnswer::kLeave;
    }
  }

  const ConnectionOptions& connection_;
  const SyncCommand& command_;
  const Console& console_;
  SyncOptions options_;
};

}  // namespace

int Sync(const ConnectionOptions& connection, const SyncCommand& command, const Console& console) {
  return RunGuarded(console, [&] { return SyncSession(connection, command, console).Run(); });
}

}  // namespace desktop
