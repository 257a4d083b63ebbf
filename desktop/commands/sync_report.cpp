#include "desktop/commands/sync_report.h"

#include <fmt/format.h>

#include <nlohmann/json.hpp>
#include <utility>

#include "common/terminal/tally.h"
#include "desktop/records/record_kind.h"
#include "desktop/sync/handheld_items.h"

namespace desktop {
namespace {

using nlohmann::ordered_json;

std::string TextOf(const ordered_json& object) {
  return object.dump(-1, ' ', false, ordered_json::error_handler_t::replace);
}

ordered_json ObjectFor(const std::string& pair) {
  ordered_json object = ordered_json::object();
  if (!pair.empty()) object["pair"] = pair;
  return object;
}

ordered_json ToJson(const std::vector<FieldConflict>& conflicts) {
  ordered_json array = ordered_json::array();
  for (const FieldConflict& each : conflicts) {
    array.push_back({{"field", each.field}, {"desk", each.desk}, {"handheld", each.handheld}});
  }
  return array;
}

ordered_json ToJson(const Action& action) {
  ordered_json object = {{"kind", NameOf(action.kind)},
                         {"name", action.name},
                         {"action", NameOf(action.happening)},
                         {"desk", NameOf(action.desk)},
                         {"handheld", NameOf(action.handheld)}};
  if (action.deskNow != nullptr) object["file"] = action.deskNow->file.string();
  if (action.handheldNow != nullptr) object["oid"] = action.handheldNow->oid;
  if (action.joined) object["joined"] = true;
  if (!action.deskFields.empty()) object["deskFields"] = action.deskFields;
  if (!action.handheldFields.empty()) object["handheldFields"] = action.handheldFields;
  if (!action.conflicts.empty()) object["conflicts"] = ToJson(action.conflicts);
  return object;
}

ordered_json ToJson(const SyncCounts& counts) {
  return {{"added", counts.added},         {"changed", counts.changed},
          {"deleted", counts.deleted},     {"merged", counts.merged},
          {"conflicts", counts.conflicts}, {"desk", counts.desk},
          {"handheld", counts.handheld}};
}

ordered_json ActionsToJson(const Plan& plan, const SyncResults& results, bool dryRun) {
  ordered_json actions = ordered_json::array();
  for (std::size_t i = 0; i < plan.actions.size(); ++i) {
    const Happening happening = plan.actions[i].happening;
    if (happening == Happening::kNote || happening == Happening::kForget) continue;
    ordered_json object = ToJson(plan.actions[i]);
    if (!dryRun) {
      object["done"] = results.items[i].done;
      if (!results.items[i].problem.empty()) object["problem"] = results.items[i].problem;
      if (!results.items[i].losses.empty()) object["losses"] = results.items[i].losses;
    }
    actions.push_back(std::move(object));
  }
  return actions;
}

}  // namespace

std::vector<std::string> NoticeLines(const std::vector<DeskNotice>& notices, bool each) {
  std::vector<std::string> lines;
  terminal::Tally tally;
  for (const DeskNotice& notice : notices) {
    const std::string property = notice.text.substr(0, notice.text.find(':'));
    const bool named = property.size() < notice.text.size();
    if (each || !named || notice.trouble == DeskTrouble::kLeftAlone) {
      lines.push_back(ToText(notice));
      continue;
    }
    const std::string folder = notice.file.begin()->string();
    if (folder == "contacts") {
      tally.Add(property, {"contact", "contacts"});
    } else {
      const std::string place = "in " + folder;
      tally.Add(property, {place, place});
    }
  }
  for (std::string& line : tally.Lines()) {
    lines.push_back(std::move(line) + " (the handheld does not hold it; -v tells more)");
  }
  return lines;
}

std::vector<std::string> LossLines(const Plan& plan, const SyncResults& results, bool each) {
  std::vector<std::string> lines;
  terminal::Tally tally;
  for (std::size_t i = 0; i < results.items.size(); ++i) {
    const Action& action = plan.actions[i];
    const KindWords& words = WordsOf(RecordKindOf(action.kind));
    for (const std::string& loss : results.items[i].losses) {
      if (each) {
        lines.push_back(fmt::format("{} {}: {}", words.name, action.name, loss));
      } else {
        tally.Add(loss, {words.name, words.plural});
      }
    }
  }
  return each ? lines : tally.Lines();
}

std::string ToText(const ArchiveAddition& addition) {
  return fmt::format("{}: add {}", addition.file.string(), addition.added);
}

std::string SyncToJson(const std::string& pair, const SyncPlan& plan, const SyncResults& results,
                       bool dryRun) {
  ordered_json object = ObjectFor(pair);
  object["dryRun"] = dryRun;
  object["actions"] = ActionsToJson(plan.items, results, dryRun);
  object["archives"] = ordered_json::array();
  object["notices"] = plan.items.notices;
  for (const ArchiveAddition& each : plan.archive) {
    object["archives"].push_back({{"file", each.file.string()}, {"added", each.added}});
  }
  if (!plan.items.stop.empty()) object["stopped"] = plan.items.stop;
  if (!results.problem.empty()) object["problem"] = results.problem;
  object["summary"] = ToJson(results.counts);
  return TextOf(object);
}

std::string FailureToJson(const std::string& pair, const std::string& problem) {
  ordered_json object = ObjectFor(pair);
  object["problem"] = problem;
  return TextOf(object);
}

}  // namespace desktop
