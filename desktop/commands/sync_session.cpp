#include "desktop/commands/sync_session.h"

#include <fmt/format.h>

#include <algorithm>
#include <new>
#include <utility>

#include "common/text/text.h"
#include "desktop/commands/sync_report.h"
#include "desktop/wire/error.h"

namespace desktop {
namespace {

constexpr std::string_view kNothing = "(nothing)";

std::string_view OrNothing(const std::string& value) {
  return value.empty() ? kNothing : std::string_view(value);
}

}  // namespace

SyncSession::SyncSession(SyncTarget target, const SyncCommand& command, const Console& console,
                         std::string headline)
    : target_(std::move(target)),
      command_(command),
      console_(console),
      headline_(std::move(headline)) {
  if (console.inIsTerminal) {
    target_.sync.ask = [this](const ConflictQuestion& question) { return Ask(question); };
  }
}

int SyncSession::Run() {
  int code = kFailed;
  headed_ = false;
  json_.clear();
  if (IsTalking()) Head();
  try {
    Synchronise(target_.connection, target_.sync,
                {[this](const SyncPlan& plan) { Show(plan); },
                 [&](const SyncPlan& plan, const SyncResults& results) {
                   code = ShowResults(plan, results);
                 }});
  } catch (const Interrupted&) {
    throw;
  } catch (const std::bad_alloc&) {
    TellFailure("out of memory");
  } catch (const std::exception& problem) {
    TellFailure(problem.what());
  }
  return code;
}

// Once a run: with what is said, or, where that is for programs or nobody, with what went wrong.
void SyncSession::Head() {
  if (headline_.empty() || std::exchange(headed_, true)) return;
  (IsTalking() ? console_.out : console_.err) << text::Shown(headline_) << std::endl;
}

void SyncSession::Say(const std::string& line) {
  Head();
  console_.out << text::Shown(line) << '\n';
}

void SyncSession::Tell(const std::string& line) {
  Head();
  console_.err << text::Shown(line) << '\n';
}

void SyncSession::TellFailure(const std::string& problem) {
  Head();
  TellProblem(console_, problem);
  if (command_.json && !target_.pair.empty()) json_ = FailureToJson(target_.pair, problem);
}

void SyncSession::Show(const SyncPlan& plan) {
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

int SyncSession::ShowResults(const SyncPlan& plan, const SyncResults& results) {
  for (std::size_t i = 0; i < results.items.size(); ++i) {
    const Action& action = plan.items.actions[i];
    if (results.items[i].problem.empty()) continue;
    Tell(fmt::format("{} {}: {}", NameOf(action.kind), action.name, results.items[i].problem));
  }
  if (!command_.quiet) {
    for (const std::string& line : LossLines(plan.items, results, command_.verbose)) Tell(line);
  }
  if (!results.problem.empty()) {
    Head();
    TellProblem(console_, results.problem);
  }
  if (IsTalking() && plan.items.stop.empty()) Say(ToText(results.counts));
  if (command_.json) json_ = SyncToJson(target_.pair, plan, results, target_.sync.dryRun);
  if (!results.problem.empty()) return results.begun ? kPartlyDone : kFailed;
  return results.whole ? kDone : kPartlyDone;
}

ConflictAnswer SyncSession::Ask(const ConflictQuestion& question) {
  Tell(fmt::format("{} {} has been changed on both sides:", NameOf(question.kind), question.name));
  std::size_t widest = 0;
  for (const FieldConflict& each : question.conflicts) {
    widest = std::max(widest, each.field.size());
  }
  for (const FieldConflict& each : question.conflicts) {
    Tell(fmt::format("  {:{}}  desk: {}  |  handheld: {}", each.field, widest, OrNothing(each.desk),
                     OrNothing(each.handheld)));
  }
  for (;;) {
    console_.err << "Take [d]esk, [h]andheld, keep [b]oth, or [l]eave it? " << std::flush;
    const std::string answer = ReadAnswer(console_, target_.connection.interruptFd);
    if (answer == "d") return ConflictAnswer::kDesk;
    if (answer == "h") return ConflictAnswer::kHandheld;
    if (answer == "b") return ConflictAnswer::kKeepBoth;
    if (answer == "l" || !console_.in) return ConflictAnswer::kLeave;
  }
}

}  // namespace desktop
