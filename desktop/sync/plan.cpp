#include "desktop/sync/plan.h"

#include <fmt/format.h>

#include <algorithm>

#include "desktop/records/record_kind.h"
#include "desktop/sync/item_fields.h"

namespace desktop {
namespace {

std::string Value(const std::string& value) {
  return value.empty() ? "nothing" : '"' + value + '"';
}

std::string ToText(const std::vector<FieldConflict>& conflicts) {
  std::string text;
  for (const FieldConflict& each : conflicts) {
    text += fmt::format("{}{}: {} on the desk, {} on the handheld", text.empty() ? "" : "; ",
                        each.field, Value(each.desk), Value(each.handheld));
  }
  return text;
}

std::string With(std::string_view what, const std::vector<std::string>& fields) {
  return fields.empty() ? std::string(what) : fmt::format("{}: {}", what, Listed(fields));
}

std::string ChangeText(const Action& action) {
  if (action.desk == Effect::kChange) return With("change on the desk", action.deskFields);
  return With("change on the handheld", action.handheldFields);
}

std::string MergeText(const Action& action) {
  std::string text = action.joined ? "is on both sides, join" : "changed on both sides, merge";
  if (action.desk != Effect::kNone) text += With("; on the desk", action.deskFields);
  if (action.handheld != Effect::kNone) text += With("; on the handheld", action.handheldFields);
  return text;
}

std::string WhatText(const Action& action) {
  const bool onDesk = action.desk != Effect::kNone;
  switch (action.happening) {
    case Happening::kAdd:
      return onDesk ? "add to the desk" : "add to the handheld";
    case Happening::kChange:
      return ChangeText(action);
    case Happening::kMerge:
      return MergeText(action);
    case Happening::kDelete:
      return onDesk ? "delete from the desk, to .corvane/trash" : "delete from the handheld";
    case Happening::kKeep:
      return onDesk ? "deleted on the desk, but changed on the handheld: add to the desk again"
                    : "deleted on the handheld, but changed on the desk: add to the handheld again";
    case Happening::kKeepBoth:
      return "conflict, keep both: " + ToText(action.conflicts);
    case Happening::kResolve:
      return fmt::format("conflict, the {} has its way: {}", action.winner,
                         ToText(action.conflicts));
    case Happening::kLeave:
      return "conflict, left alone: " + ToText(action.conflicts);
    case Happening::kCopy:
    case Happening::kNote:
    case Happening::kForget:
      break;
  }
  return {};
}

}  // namespace

bool Plan::HasEffects() const {
  return std::ranges::any_of(actions, [](const Action& action) {
    return action.desk != Effect::kNone || action.handheld != Effect::kNone;
  });
}

void Count(const Action& action, SyncCounts& counts) {
  switch (action.happening) {
    case Happening::kAdd:
    case Happening::kKeep:
      ++counts.added;
      break;
    case Happening::kChange:
      ++counts.changed;
      break;
    case Happening::kDelete:
      ++counts.deleted;
      break;
    case Happening::kMerge:
      ++counts.merged;
      break;
    case Happening::kKeepBoth:
    case Happening::kResolve:
    case Happening::kLeave:
      ++counts.conflicts;
      break;
    case Happening::kCopy:
    case Happening::kNote:
    case Happening::kForget:
      break;
  }
  if (action.desk != Effect::kNone) ++counts.desk;
  if (action.handheld != Effect::kNone) ++counts.handheld;
}

std::string ToText(const SyncCounts& counts) {
  std::string text = fmt::format("{} added, {} changed, ", counts.added, counts.changed);
  if (counts.deleted > 0) text += fmt::format("{} deleted, ", counts.deleted);
  return text + fmt::format("{} merged, {} {}; desk {}, handheld {}", counts.merged,
                            counts.conflicts, counts.conflicts == 1 ? "conflict" : "conflicts",
                            counts.desk, counts.handheld);
}

std::string ToText(const Action& action) {
  const std::string what = WhatText(action);
  if (what.empty()) return {};
  return fmt::format("{} {}: {}", NameOf(action.kind), action.name, what);
}

std::string_view NameOf(ItemKind kind) {
  return WordsOf(RecordKindOf(kind)).name;
}

std::string_view NameOf(Happening happening) {
  switch (happening) {
    case Happening::kAdd:
      return "add";
    case Happening::kChange:
      return "change";
    case Happening::kMerge:
      return "merge";
    case Happening::kDelete:
      return "delete";
    case Happening::kKeep:
      return "keep changed";
    case Happening::kKeepBoth:
      return "keep both";
    case Happening::kCopy:
      return "copy";
    case Happening::kResolve:
      return "resolve";
    case Happening::kLeave:
      return "leave";
    case Happening::kNote:
      return "note";
    case Happening::kForget:
      return "forget";
  }
  return {};
}

std::string_view NameOf(Effect effect) {
  switch (effect) {
    case Effect::kNone:
      return "none";
    case Effect::kAdd:
      return "add";
    case Effect::kChange:
      return "change";
    case Effect::kDelete:
      return "delete";
  }
  return {};
}

}  // namespace desktop
