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
  headed_ = said_ = false;
  toldBefore_ = std::exchange(told_, {});
  if (IsTalking() && !command_.watch) Head();
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
    json_ = FailureToJson(target_.pair, "out of memory");
  } catch (const std::exception& problem) {
    TellFailure(problem.what());
    json_ = FailureToJson(target_.pair, problem.what());
  }
  failedBefore_ = code == kFailed;
  return code;
}

// Once a run: with what is said, or, where that is for programs or nobody, with what went wrong.
void SyncSession::Head() {
  if (headline_.empty() || std::exchange(headed_, true)) return;
  (IsTalking() ? console_.out : console_.err) << text::Shown(headline_) << std::endl;
}

bool SyncSession::IsNews(const std::string& line) {
  if (!command_.watch) return true;
  told_.insert(line);
  return !toldBefore_.contains(line);
}

void SyncSession::Say(const std::string& line) {
  Head();
  said_ = true;
  console_.out << text::Shown(line) << '\n';
}

void SyncSession::Tell(const std::string& line) {
  if (!IsNews(line)) return;
  Head();
  console_.err << text::Shown(line) << '\n';
}

void SyncSession::TellFailure(const std::string& problem) {
  if (IsNews(problem)) {
    Head();
    TellProblem(console_, problem);
  }
}

void SyncSession::Show(const SyncPlan& plan) {
  if (!command_.quiet) {
    for (const std::string& notice : plan.notices) Tell(notice);
    for (const std::string& line : NoticeLines(plan.deskNotices, command_.verbose)) Tell(line);
  }
  for (const std::string& notice : plan.items.notices) Tell(notice);
  if (!IsTalking()) return;
  for (const Action& action : plan.items.actions) {
    const std::string line = ToText(action);
    const bool lasts = action.happening == Happening::kLeave;
    if (!line.empty() && (!lasts || IsNews(line))) Say(line);
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
  if (!results.problem.empty()) TellFailure(results.problem);
  const bool sumsUp = !command_.watch || command_.verbose || said_ || failedBefore_;
  if (IsTalking() && plan.items.stop.empty() && sumsUp) Say(ToText(results.counts));
  if (command_.json) {
    json_ = SyncToJson(target_.pair, plan, results, target_.sync.dryRun);
  }
  if (!results.problem.empty()) return results.begun ? kPartlyDone : kFailed;
  return results.whole ? kDone : kPartlyDone;
}

ConflictAnswer SyncSession::Ask(const ConflictQuestion& question) {
  Head();
  const auto show = [this](const std::string& line) { console_.err << text::Shown(line) << '\n'; };
  show(fmt::format("{} {} has been changed on both sides:", NameOf(question.kind), question.name));
  std::size_t widest = 0;
  for (const FieldConflict& each : question.conflicts) {
    widest = std::max(widest, each.field.size());
  }
  for (const FieldConflict& each : question.conflicts) {
    show(fmt::format("  {:{}}  desk: {}  |  handheld: {}", each.field, widest, OrNothing(each.desk),
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
