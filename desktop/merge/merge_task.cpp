#include <functional>
#include <optional>
#include <string>
#include <utility>

#include "common/calendar/pattern_words.h"
#include "desktop/merge/entry_merge.h"
#include "desktop/merge/field_words.h"
#include "desktop/merge/item.h"
#include "desktop/merge/item_merge.h"

namespace desktop {
namespace {

using formats::Importance;
using formats::local_days;
using formats::Task;

template <typename Member, typename ToWords>
void MergeTaskMember(const Versions<Task>& versions, const char* name, Member Task::*member,
                     const ToWords& words, MergeConflicts& conflicts) {
  MergeField(
      versions, name, [&](const Task& each) { return each.*member; },
      [&](Task& each, const Member& value) { each.*member = value; }, std::equal_to<>(),
      std::equal_to<>(), words, conflicts);
}

void MergeTaskText(const Versions<Task>& versions, const char* name, std::string Task::*member,
                   MergeConflicts& conflicts) {
  MergeField(
      versions, name, [&](const Task& each) -> const std::string& { return each.*member; },
      [&](Task& each, const std::string& text) { each.*member = text; }, SameText, SameText,
      [](const std::string& text) { return Words(text); }, conflicts);
}

using Completion = std::pair<bool, std::optional<local_days>>;

Completion CompletionOf(const Task& task) {
  return {task.complete, task.completed};
}

void SetCompletion(Task& task, const Completion& completion) {
  task.complete = completion.first;
  task.completed = completion.second;
}

std::string CompletionWords(const Completion& completion) {
  if (!completion.first) return "no";
  return completion.second ? "on " + Words(completion.second) : "yes";
}

std::string ImportanceWords(Importance importance) {
  if (importance == Importance::kLow) return "low";
  return importance == Importance::kHigh ? "high" : "normal";
}

std::string TaskRuleWords(const std::optional<calendar::Pattern>& pattern) {
  return pattern ? PatternWords(*pattern) : std::string();
}

bool HasDate(const Task& task) {
  return task.start || task.due;
}

// One side took the days away, from which the other one changed how it recurs.
void GiveRuleItsDays(const Versions<Task>& versions, MergeConflicts& conflicts) {
  const auto isLost = [](const Task& out) { return out.pattern && !HasDate(out); };
  const auto had = [](const Task& task) { return !task.pattern || HasDate(task); };
  if (!had(versions.winner) || !had(versions.loser)) return;
  if (!isLost(versions.winnerOut) && !isLost(versions.loserOut)) return;
  for (Task* out : {&versions.winnerOut, &versions.loserOut}) {
    out->start = versions.winner.start;
    out->due = versions.winner.due;
    out->pattern = versions.winner.pattern;
  }
  TellConflict(
      versions, "Recurrence", [](const Task& task) { return task.pattern; }, TaskRuleWords,
      conflicts);
}

void MergeNormalizedTask(const Versions<Task>& versions, MergeConflicts& conflicts) {
  const auto day = [](const std::optional<local_days>& value) { return Words(value); };
  MergeTaskText(versions, "Subject", &Task::subject, conflicts);
  MergeTaskMember(versions, "Start", &Task::start, day, conflicts);
  MergeTaskMember(versions, "Due", &Task::due, day, conflicts);
  MergeTaskMember(versions, "Recurrence", &Task::pattern, TaskRuleWords, conflicts);
  GiveRuleItsDays(versions, conflicts);
  MergeTaskMember(
      versions, "Reminder", &Task::reminder,
      [](const std::optional<formats::local_seconds>& value) { return Words(value); }, conflicts);
  MergeField(versions, "Complete", CompletionOf, SetCompletion, std::equal_to<>(),
             std::equal_to<>(), CompletionWords, conflicts);
  MergeTaskMember(versions, "Importance", &Task::importance, ImportanceWords, conflicts);
  MergeTaskMember(
      versions, "Private", &Task::isPrivate, [](bool value) { return Words(value); }, conflicts);
  MergeTaskText(versions, "Note", &Task::body, conflicts);
  MergeNames({versions.winnerBase.categories, versions.winner.categories,
              versions.loserBase.categories, versions.loser.categories,
              versions.winnerOut.categories, versions.loserOut.categories});
}

}  // namespace

void MergeTask(const Versions<Task>& versions, MergeConflicts& conflicts) {
  MergeAsNormal(versions,
                [&](const Versions<Task>& each) { MergeNormalizedTask(each, conflicts); });
}

}  // namespace desktop
