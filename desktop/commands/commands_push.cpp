#include "desktop/commands/commands_push.h"

#include <fmt/format.h>

#include <algorithm>
#include <map>
#include <utility>

#include "common/terminal/notice_sums.h"
#include "common/terminal/progress.h"
#include "common/text/text.h"
#include "desktop/commands/commands_pair.h"
#include "desktop/commands/losses.h"
#include "desktop/commands/push_report.h"
#include "desktop/transfer/mapping.h"
#include "desktop/transfer/push_check.h"
#include "desktop/wire/error.h"

namespace desktop {
namespace {

void PrintResult(const PushResult& result, std::ostream& to) {
  to << text::Shown(result.record->place) << ": ";
  if (!result.record->title.empty()) to << text::Shown(result.record->title) << ": ";
  to << OutcomeText(result) << '\n';
  if (!result.xml.empty()) to << "  " << text::Shown(result.xml) << '\n';
}

// A record with a state is sent as it stands.
bool GoesByZone(const PushRecord& record) {
  return record.kind != kContactKind && record.state.empty();
}

bool IsSent(PushOutcome outcome) {
  return outcome == PushOutcome::kAdded || outcome == PushOutcome::kAddedAnew ||
         outcome == PushOutcome::kChanged;
}

void AddLoss(const PushRecord& record, const std::string& loss, Losses& losses) {
  if (const auto kind = KindNamed(record.kind)) losses.Add(*kind, record.place, loss);
}

// Some handhelds ignore them, and take the rest of the contact in.
void AddUnkeptNames(const ConnectionOptions& connection, const std::vector<PushResult>& results,
                    Losses& losses) {
  std::map<Oid, const PushRecord*> sent;
  for (const PushResult& result : results) {
    if (IsSent(result.outcome)) sent[result.oid] = result.record;
  }
  for (const auto& [record, names] : FindUnkeptNames(connection, sent)) {
    for (const std::string& name : names) {
      AddLoss(*record, name + ": the handheld does not keep it", losses);
    }
  }
}

std::vector<PushRecord> ReadPushFiles(const PushOptions& options, const Console& console) {
  terminal::NoticeSums sums;
  const NoticeSink sink = [&](const std::filesystem::path& file, std::size_t line,
                              const std::string& text, terminal::Noun noun, std::size_t owner) {
    if (console.verbosity == Verbosity::kAll)
      console.err << text::Shown(fmt::format("{}:{}: {}", file.string(), line, text)) << '\n';
    else
      sums.Add(file.string(), line, text, noun, owner);
  };
  std::vector<PushRecord> records;
  for (const std::filesystem::path& file : options.files) {
    for (PushRecord& record : ReadPushFile(file, options.zone, sink, options.overflow)) {
      records.push_back(std::move(record));
    }
  }
  if (console.verbosity != Verbosity::kErrors)
    for (const std::string& line : sums.Lines()) console.err << text::Shown(line) << '\n';
  return records;
}

}  // namespace

int RunPush(const ConnectionOptions& connection, const PushPolicy& policy,
            const std::optional<std::filesystem::path>& mapping,
            std::span<const PushRecord> records, const PushReporting& reporting,
            const Console& console) {
  Mapping known(MappingPath(mapping, connection.target));
  terminal::Progress progress(console.err, console.showsProgress(), reporting.label,
                              records.size());
  Losses losses(progress, console);
  PushSummary summary;
  std::vector<PushResult> results;
  PushSession session(connection, policy, known, [&](const PushResult& result) {
    summary.Count(result.outcome);
    results.push_back(result);
    const bool each = console.verbosity == Verbosity::kAll ||
                      (reporting.each && console.verbosity == Verbosity::kSummary);
    // Of those that were not even sent, the reason and how many they are is enough.
    const bool failed = IsFailure(result.outcome) && result.outcome != PushOutcome::kNotSent;
    if (!console.json && (each || failed)) {
      progress.Hide();
      PrintResult(result, console.verbosity == Verbosity::kErrors ? console.err : console.out);
    }
    if (IsTakenIn(result.outcome)) {
      for (const std::string& loss : result.record->losses) AddLoss(*result.record, loss, losses);
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
  if (code == kDone) attempt([&] { AddUnkeptNames(connection, results, losses); });
  attempt([&] { known.Save(); });
  progress.Hide();
  if (const std::size_t late = session.deletedLatecomers(); late > 0) {
    console.err << fmt::format(
        "{} more of an earlier push came late, were there twice and have been deleted\n", late);
  }
  losses.PrintSums();
  if (console.json) console.out << ResultsToJson(results);
  if (console.verbosity != Verbosity::kErrors) console.err << SummaryText(results) << '\n';
  FlushOutput(console);
  return code == kDone ? summary.exitCode() : code;
}

int Push(const ConnectionOptions& connection, const PushOptions& options, const Console& console) {
  return RunGuarded(console, [&] {
    const std::vector<PushRecord> records = ReadPushFiles(options, console);
    if (options.zoneIsGuessed && std::ranges::any_of(records, GoesByZone)) {
      TellGuessedZone(options.zone, console);
    }
    PushPolicy policy = options.policy;
    policy.country = options.country.value_or(phone::PhoneNumbers::CountryOfHost());
    return RunPush(connection, policy, options.mapping, records,
                   {.label = "Pushing", .each = options.policy.dryRun}, console);
  });
}

}  // namespace desktop
