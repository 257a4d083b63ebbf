#include "desktop/commands/commands_push.h"

#include <fmt/format.h>

#include <algorithm>
#include <map>
#include <utility>

#include "common/terminal/progress.h"
#include "common/text/text.h"
#include "desktop/commands/commands_pair.h"
#include "desktop/commands/push_report.h"
#include "desktop/transfer/mapping.h"
#include "desktop/transfer/push_check.h"
#include "desktop/wire/error.h"

namespace desktop {
namespace {

void PrintResult(const PushResult& result, const Console& console) {
  console.out << text::Shown(result.record->place) << ": ";
  if (!result.record->title.empty()) console.out << text::Shown(result.record->title) << ": ";
  console.out << OutcomeText(result) << '\n';
  if (!result.xml.empty()) console.out << "  " << text::Shown(result.xml) << '\n';
}

// A record with a state is sent as it stands.
bool GoesByZone(const PushRecord& record) {
  return record.kind != kContactKind && record.state.empty();
}

bool IsSent(PushOutcome outcome) {
  return outcome == PushOutcome::kAdded || outcome == PushOutcome::kAddedAnew ||
         outcome == PushOutcome::kChanged;
}

void PrintLosses(const PushRecord& record, const Console& console) {
  for (const std::string& loss : record.losses) {
    console.err << text::Shown(record.place + ": " + loss) << '\n';
  }
}

// Some handhelds ignore them, and take the rest of the contact in.
void PrintUnkeptNames(const ConnectionOptions& connection, const std::vector<PushResult>& results,
                      terminal::Progress& progress, const Console& console) {
  std::map<Oid, const PushRecord*> sent;
  for (const PushResult& result : results) {
    if (IsSent(result.outcome)) sent[result.oid] = result.record;
  }
  for (const auto& [record, names] : FindUnkeptNames(connection, sent)) {
    progress.Hide();
    for (const std::string& name : names) {
      console.err << text::Shown(record->place + ": " + name + ": the handheld does not keep it")
                  << '\n';
    }
  }
}

}  // namespace

int RunPush(const ConnectionOptions& connection, const PushPolicy& policy,
            const std::optional<std::filesystem::path>& mapping,
            std::span<const PushRecord> records, const PushReporting& reporting,
            const Console& console) {
  Mapping known(MappingPath(mapping, connection.target));
  terminal::Progress progress(console.err, console.errIsTerminal, reporting.label, records.size());
  PushSummary summary;
  std::vector<PushResult> results;
  PushSession session(connection, policy, known, [&](const PushResult& result) {
    summary.Count(result.outcome);
    results.push_back(result);
    if (!reporting.json) {
      progress.Hide();
      PrintResult(result, console);
    }
    if (IsTakenIn(result.outcome) && !result.record->losses.empty()) {
      progress.Hide();
      PrintLosses(*result.record, console);
    }
    progress.Update(results.size());
  });
  int code = kDone;
  const auto attempt = [&](const auto& step) {
    try {
      step();
    } catch (const Error& problem) {
      progress.Hide();
      TellProblem(console, problem.what());
      code = summary.done > 0 ? kPartlyDone : kFailed;
    }
  };
  attempt([&] { session.Run(records); });
  if (code == kDone) attempt([&] { PrintUnkeptNames(connection, results, progress, console); });
  attempt([&] { known.Save(); });
  progress.Hide();
  if (const std::size_t late = session.deletedLatecomers(); late > 0) {
    console.err << fmt::format(
        "{} more of an earlier push came late, were there twice and have been deleted\n", late);
  }
  if (reporting.json) console.out << ResultsToJson(results);
  console.err << SummaryText(results) << '\n';
  FlushOutput(console);
  return code == kDone ? summary.exitCode() : code;
}

int Push(const ConnectionOptions& connection, const PushOptions& options, const Console& console) {
  return RunGuarded(console, [&] {
    std::vector<PushRecord> records;
    for (const std::filesystem::path& file : options.files) {
      for (PushRecord& record : ReadPushFile(file, options.zone, console.err)) {
        records.push_back(std::move(record));
      }
    }
    if (options.zoneIsGuessed && std::ranges::any_of(records, GoesByZone)) {
      TellGuessedZone(options.zone, console);
    }
    PushPolicy policy = options.policy;
    policy.country = options.country.value_or(phone::PhoneNumbers::CountryOfHost());
    return RunPush(connection, policy, options.mapping, records, {"Pushing", options.json},
                   console);
  });
}

}  // namespace desktop
