#include "desktop/sync/sync_run.h"

#include <fmt/format.h>

#include <algorithm>
#include <map>
#include <utility>

#include "desktop/folder/desk_folder.h"
#include "desktop/records/record_kind.h"
#include "desktop/sync/history.h"
#include "desktop/sync/in_flight.h"
#include "desktop/sync/memory.h"
#include "desktop/sync/remembered_place.h"
#include "desktop/sync/sides.h"
#include "desktop/sync/state_folder.h"
#include "desktop/transfer/push_recovery.h"
#include "desktop/wire/error.h"

namespace desktop {
namespace {

constexpr char kAddressNote[] = "address";

class SyncRun {
 public:
  SyncRun(const ConnectionOptions& connection, const SyncOptions& options)
      : connection_(connection),
        options_(options),
        state_(options.folder, options.dryRun ? StateFolder::Use::kLook : StateFolder::Use::kRun),
        memory_(state_.memory(), state_.hasHistory()),
        mapping_(state_.mapping()),
        recovery_(connection, mapping_, options.quiet,
                  options.dryRun ? PushRecovery::Surplus::kLeave : PushRecovery::Surplus::kDelete),
        zone_(ZoneToUse()),
        folder_(options.folder, zone_, options.clock) {}

  void Run(const SyncListener& listener) {
    AdoptUnheardOf(memory_, mapping_, recovery_);
    ReadSides();
    MakePlans();
    listener.onPlan(plan_);
    results_.items.resize(plan_.items.actions.size());
    results_.whole = !IsLeavingSomething();
    if (!plan_.items.stop.empty()) {
      results_.problem = plan_.items.stop;
    } else if (options_.dryRun) {
      for (const Action& action : plan_.items.actions) Count(action, results_.counts);
    } else {
      Execute();
    }
    listener.onEnd(plan_, results_);
  }

 private:
  calendar::Zone ZoneToUse() {
    const std::string known = memory_.Note(kZoneNote);
    if (options_.zone) {
      if (!known.empty() && known != options_.zone->name()) {
        throw Error(
            fmt::format("the folder is kept in step with a handheld in the zone {}, and "
                        "not in {}",
                        known, options_.zone->name()));
      }
      return *options_.zone;
    }
    if (!known.empty()) {
      const std::optional<calendar::Zone> zone = calendar::Zone::Find(known);
      if (!zone) throw Error(known + ", the handheld's zone, is no time zone of this computer");
      return *zone;
    }
    calendar::Zone zone = calendar::Zone::OfHost();
    plan_.notices.push_back(fmt::format(
        "the handheld is taken to be in this computer's time zone, {}: --zone says otherwise",
        zone.name()));
    return zone;
  }

  [[nodiscard]] std::string Country() const {
    if (options_.country) return *options_.country;
    if (std::string known = memory_.Note(kCountryNote); !known.empty()) return known;
    return phone::PhoneNumbers::CountryOfHost();
  }

  void ReadSides() {
    KnownRecords known;
    known.reserve(memory_.links().size());
    for (const Link& link : memory_.links()) known.emplace(link.oid, link.recordHash);
    for (const ItemKind kind : {ItemKind::kContact, ItemKind::kAppointment, ItemKind::kTask}) {
      if (!options_.kinds.contains(RecordKindOf(kind))) continue;
      sides_.handheld[kind] = ReadHandheld(connection_, kind, zone_, known);
    }
    parts_ = PartsOf(options_.kinds);
    DeskContents contents = folder_.Read(parts_, memory_.Desk());
    sides_.desk = std::move(contents.files);
    plan_.deskNotices = std::move(contents.notices);
    for (const auto& [name, stamp] : memory_.stamps()) {
      const auto file = sides_.desk.find(name);
      if (file != sides_.desk.end() && file->second.stamp == stamp) sides_.unchanged.insert(name);
    }
  }

  void MakePlans() {
    const PlanPolicy policy{options_.conflict, options_.ask, options_.allowDeletions, zone_,
                            phone::PhoneNumbers(Country())};
    plan_.items = MakePlan(sides_, memory_, FindInFlight(memory_, mapping_), policy);
    for (const RecordKind kind : {RecordKind::kMessages, RecordKind::kCalls}) {
      if (!options_.kinds.contains(kind)) continue;
      ArchivePlan archive = PlanArchive(connection_, options_.folder, kind);
      for (ArchiveAddition& each : archive.additions) plan_.archive.push_back(std::move(each));
      for (std::string& notice : archive.notices) plan_.notices.push_back(std::move(notice));
    }
    const std::string address = memory_.Note(kAddressNote);
    if (!memory_.links().empty() && address != ToString(connection_.target)) {
      plan_.notices.push_back(fmt::format("the handheld that was at {} is now at {}", address,
                                          ToString(connection_.target)));
    }
  }

  void Step(std::string_view what) const {
    if (options_.hook) options_.hook(what);
  }

  void SaveHistory(const History& history, const std::string& time) const {
    SavedRun run{time, {}, {}};
    SyncCounts counts;
    for (const Action& action : plan_.items.actions) Count(action, counts);
    run.what = "before a sync: " + ToText(counts);
    for (const auto& [kind, items] : sides_.handheld) run.kinds.push_back(kind);
    Step("save the history");
    history.Save(run, folder_, sides_, memory_.path());
  }

  void Execute() {
    folder_.Make();
    const History history(state_.history());
    const auto now = std::chrono::floor<std::chrono::seconds>(std::chrono::system_clock::now());
    const std::string time = history.NewTime(now);
    const Execution::Means means{connection_, folder_,   state_.trash(), memory_,
                                 mapping_,    recovery_, zone_,          options_.hook};
    Execution execution(means, plan_.items, sides_, parts_);
    execution.Remember({{kZoneNote, zone_.name()},
                        {kCountryNote, Country()},
                        {kAddressNote, ToString(connection_.target)}});
    try {
      if (plan_.items.HasEffects()) {
        SaveHistory(history, time);
        history.Prune(now);
      }
      execution.Run();
      for (const ArchiveAddition& addition : plan_.archive) {
        Step("add to an archive");
        desktop::Execute(addition, options_.folder);
        results_.begun = true;
      }
    } catch (const Error& problem) {
      results_.problem = problem.what();
      if (!execution.started()) history.Forget(time);
    }
    TakeResults(execution);
  }

  [[nodiscard]] bool IsLeavingSomething() const {
    return plan_.items.leftAlone > 0 ||
           std::ranges::any_of(plan_.deskNotices, [](const DeskNotice& notice) {
             return notice.trouble == DeskTrouble::kLeftAlone;
           });
  }

  void TakeResults(const Execution& execution) {
    results_.items = execution.results();
    results_.begun = results_.begun || execution.begun();
    for (std::size_t i = 0; i < results_.items.size(); ++i) {
      const Action& action = plan_.items.actions[i];
      const bool left = action.happening == Happening::kLeave;
      if (results_.items[i].done || left) Count(action, results_.counts);
      if (!results_.items[i].done) results_.whole = false;
    }
  }

  const ConnectionOptions& connection_;
  const SyncOptions& options_;
  SyncPlan plan_;
  SyncResults results_;
  StateFolder state_;
  Memory memory_;
  Mapping mapping_;
  PushRecovery recovery_;
  calendar::Zone zone_;
  DeskFolder folder_;
  DeskParts parts_;
  Sides sides_;
};

}  // namespace

DeskParts PartsOf(const std::set<RecordKind>& kinds) {
  return {kinds.contains(RecordKind::kContacts),
          kinds.contains(RecordKind::kAppointments) || kinds.contains(RecordKind::kTasks)};
}

void Synchronise(const ConnectionOptions& connection, const SyncOptions& options,
                 const SyncListener& listener) {
  SyncRun(connection, options).Run(listener);
}

}  // namespace desktop
