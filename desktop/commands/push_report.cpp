#include "desktop/commands/push_report.h"

#include <fmt/format.h>

#include <algorithm>
#include <array>
#include <nlohmann/json.hpp>

#include "desktop/commands/console.h"
#include "desktop/wire/status_text.h"

namespace desktop {
namespace {

constexpr std::string_view kOidBehind = " (OID {})";

struct Row {
  PushOutcome outcome;
  std::string_view name;  // for programs, and in the summary
  std::string_view text;  // {} is the OID
  bool failure = false;
  bool takenIn = false;
};

constexpr std::array kRows = {
    Row{PushOutcome::kAdded, "added", "added with OID {}", false, true},
    Row{PushOutcome::kAddedAnew, "added anew", "was gone, added anew with OID {}", false, true},
    Row{PushOutcome::kChanged, "changed", "changed (OID {})", false, true},
    Row{PushOutcome::kDeleted, "deleted", "is not there any more (OID {})", false},
    Row{PushOutcome::kNotFound, "not found", "not found (OID {})", true},
    Row{PushOutcome::kNothingToDelete, "nothing to delete", "names no item to delete", false},
    Row{PushOutcome::kUnchanged, "unchanged", "unchanged (OID {})", false},
    Row{PushOutcome::kConflict, "conflict",
        "conflict: changed on the handheld since, or another handheld (OID {}); pull first, or "
        "push "
        "with --force",
        true},
    Row{PushOutcome::kFailed, "failed", "failed (OID {})", true},
    Row{PushOutcome::kWrongAnswer, "wrongly answered",
        "sent, but the handheld answered with the OID of another item, it may have been done "
        "(OID {})",
        true, true},
    Row{PushOutcome::kUnanswered, "unanswered",
        "sent, but not answered, it may have been done (OID {})", true, true},
    Row{PushOutcome::kNotSent, "not sent", "not sent (OID {})", true},
    Row{PushOutcome::kWouldAdd, "would add", "would be added", false, true},
    Row{PushOutcome::kWouldAddAnew, "would add anew", "was gone, would be added anew", false, true},
    Row{PushOutcome::kWouldChange, "would change", "would be changed (OID {})", false, true},
    Row{PushOutcome::kWouldDelete, "would delete", "would be deleted (OID {})", false},
};

const Row& RowOf(PushOutcome outcome) {
  return *std::find_if(kRows.begin(), kRows.end(),
                       [&](const Row& row) { return row.outcome == outcome; });
}

}  // namespace

std::string OutcomeText(const PushResult& result) {
  const Row& row = RowOf(result.outcome);
  std::string_view form = row.text;
  if (result.oid == 0 && form.ends_with(kOidBehind)) form.remove_suffix(kOidBehind.size());
  std::string text = fmt::format(fmt::runtime(form), result.oid);
  if (result.code != 0) text += ": " + StatusText(result.code);
  if (result.outcome == PushOutcome::kFailed && result.code == 0) text += ": no reason given";
  return text;
}

bool IsFailure(PushOutcome outcome) {
  return RowOf(outcome).failure;
}

bool IsTakenIn(PushOutcome outcome) {
  return RowOf(outcome).takenIn;
}

std::string ResultsToJson(std::span<const PushResult> results) {
  std::string lines;
  for (const PushResult& result : results) {
    nlohmann::ordered_json object = {{"source", result.record->place},
                                     {"name", result.record->title},
                                     {"outcome", RowOf(result.outcome).name},
                                     {"oid", result.oid},
                                     {"code", result.code}};
    if (result.code != 0) object["meaning"] = StatusMeaning(result.code);
    if (!result.xml.empty()) object["record"] = result.xml;
    lines += object.dump(-1, ' ', false, nlohmann::ordered_json::error_handler_t::replace) + '\n';
  }
  return lines;
}

void PushSummary::Count(PushOutcome outcome) {
  ++(RowOf(outcome).failure ? failed : done);
  notFound = notFound || outcome == PushOutcome::kNotFound;
}

int PushSummary::exitCode() const {
  if (failed == 0) return kDone;
  return done == 0 && !notFound ? kFailed : kPartlyDone;
}

std::string SummaryText(std::span<const PushResult> results) {
  std::string text;
  for (const Row& row : kRows) {
    const auto count = std::count_if(results.begin(), results.end(), [&](const PushResult& each) {
      return each.outcome == row.outcome;
    });
    if (count > 0) text += fmt::format("{}{} {}", text.empty() ? "" : ", ", count, row.name);
  }
  return text.empty() ? "nothing to send" : text;
}

}  // namespace desktop
