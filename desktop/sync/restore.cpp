#include "desktop/sync/restore.h"

#include <fmt/format.h>

#include <algorithm>
#include <iterator>
#include <map>
#include <optional>
#include <set>
#include <system_error>
#include <unordered_map>
#include <utility>

#include "common/files/atomic_file.h"
#include "common/formats/items/identity.h"
#include "desktop/folder/desk_folder.h"
#include "desktop/records/record_kind.h"
#include "desktop/sync/database.h"
#include "desktop/sync/in_flight.h"
#include "desktop/sync/pairing.h"
#include "desktop/sync/sides.h"
#include "desktop/sync/state_folder.h"
#include "desktop/transfer/push_session.h"
#include "desktop/transfer/state_hash.h"
#include "desktop/wire/error.h"
#include "desktop/wire/status_text.h"

namespace desktop {
namespace {

namespace fs = std::filesystem;

// What the mapping calls an item that is brought back, before its OID of then.
constexpr char kBroughtBack = '~';

calendar::Zone KnownZone(const Memory& memory) {
  const std::string name = memory.Note("zone");
  const std::optional<calendar::Zone> zone = calendar::Zone::Find(name);
  if (!zone) throw Error(fmt::format("the handheld's time zone, {}, is not known here", name));
  return *zone;
}

fs::path StateOf(const fs::path& folder) {
  std::error_code error;
  if (!fs::exists(folder / kStateName, error)) {
    throw Error(fmt::format("{} has never been synchronised", folder.string()));
  }
  return folder;
}

class RestoreRun {
 public:
  RestoreRun(const ConnectionOptions& connection, const RestoreOptions& options)
      : connection_(connection),
        options_(options),
        state_(StateOf(options.folder), StateFolder::Use::kRun),
        history_(state_.history()),
        runs_(RunsFrom(history_.Runs(), options.time)),
        memory_(state_.memory(), true),
        mapping_(state_.mapping()),
        recovery_(connection, mapping_, options.quiet),
        zone_(KnownZone(memory_)),
        folder_(options.folder, zone_) {}

  RestoreResults Run() {
    results_.time = runs_.front().time;
    AdoptUnheardOf(memory_, mapping_, recovery_);
    ReadSides();
    PlanDesk();
    PlanHandheld();
    Save();
    RestoreDesk();
    RestoreHandheld();
    if (results_.problems.empty()) RestoreMemory();
    mapping_.Save();
    return std::move(results_);
  }

 private:
  static std::vector<SavedRun> RunsFrom(std::vector<SavedRun> runs, const std::string& time) {
    if (runs.empty()) throw Error("there is nothing in the history");
    const auto found =
        time == "latest" ? std::prev(runs.end()) : std::ranges::find(runs, time, &SavedRun::time);
    if (found == runs.end()) throw Error(fmt::format("there is no {} in the history", time));
    runs.erase(runs.begin(), found);
    return runs;
  }

  void Step(std::string_view what) const {
    if (options_.hook) options_.hook(what);
  }

  void ReadSides() {
    for (const ItemKind kind : runs_.front().kinds) {
      sides_.handheld[kind] = ReadHandheld(connection_, kind, zone_, KnownRecords());
    }
    sides_.desk = folder_.Read({}, memory_.Desk()).files;
  }

  // What the first run that had to do with a file tells decides: it was there, or it was made then.
  void PlanDesk() {
    std::map<std::string, std::set<std::string>> madeIn;  // files by runs
    for (const Link& link : memory_.links()) madeIn[link.made].insert(link.file);
    std::set<std::string> made;
    for (const SavedRun& run : runs_) {
      const fs::path desk = history_.DeskOf(run.time);
      std::error_code error;
      for (const auto& entry : fs::recursive_directory_iterator(desk, error)) {
        if (!entry.is_regular_file(error)) continue;
        const std::string name = fs::relative(entry.path(), desk).string();
        if (!made.contains(name)) back_.emplace(name, entry.path());
      }
      for (const std::set<std::string>& files : {run.created, madeIn[run.time]}) {
        for (const std::string& name : files) {
          if (!back_.contains(name)) made.insert(name);
        }
      }
    }
    for (const auto& [name, file] : sides_.desk) {
      if (!made.contains(name)) continue;
      for (const DeskItem& item : file.items) removals_.push_back({item, {}});
    }
  }

  void PlanHandheld() {
    std::unordered_map<Oid, const HandheldItem*> now;
    for (const auto& [kind, items] : sides_.handheld) {
      for (const HandheldItem& item : items) now.emplace(item.oid, &item);
    }
    std::set<Oid> wanted;
    const std::string then = files::ReadWholeFile(history_.HandheldOf(runs_.front().time));
    for (const Record& record : ParseRecords(then)) {
      if (!record.oid) continue;
      const std::string kind(KindOfElement(record.element.name));
      const std::string key = kBroughtBack + std::to_string(*record.oid);
      Oid oid = *record.oid;
      if (const MappedItem* const known = mapping_.FindUid(kind, key);
          known != nullptr && now.contains(known->oid)) {
        oid = known->oid;
        moved_[*record.oid] = oid;
      }
      wanted.insert(oid);
      const auto there = now.find(oid);
      const bool same = there != now.end() && oid == *record.oid &&
                        there->second->hash == formats::ContentHash(record.bytes);
      if (same || (there != now.end() && there->second->unreadable)) continue;
      const Item item = ItemOfRecord(record.bytes, zone_);
      PushRecord push = RecordFor(item, key, zone_);
      if (there != now.end()) {
        const Item is = ItemOf(*there->second, zone_);
        if (RecordFor(is, key, zone_).xml == push.xml) continue;
        mapping_.Put({oid, kind, key, {}, {}, StateHash(ElementOf(there->second->record))});
      }
      Send(std::move(push), *record.oid);
    }
    for (const auto& [oid, item] : now) {
      if (wanted.contains(oid) || item->unreadable) continue;
      Send(DeletionOf(RecordKindOf(KindOf(*item->item)), oid), oid);
    }
  }

  static XmlElement ElementOf(const std::string& record) {
    return ParseRecords("<root>" + record + "</root>")[0].element;
  }

  void Send(PushRecord record, Oid oid) {
    records_.push_back(std::move(record));
    oids_.push_back(oid);
  }

  void Save() {
    const auto now = std::chrono::floor<std::chrono::seconds>(std::chrono::system_clock::now());
    SavedRun run{
        history_.NewTime(now), "before restoring " + results_.time, runs_.front().kinds, {}};
    std::set<std::string> touched;
    std::error_code error;
    for (const auto& [name, from] : back_) {
      (fs::exists(options_.folder / name, error) ? touched : run.created).insert(name);
    }
    for (const DeskEdit& removal : removals_) touched.insert(removal.item.file.string());
    Step("save the history");
    history_.Save(run, options_.folder, touched, sides_, memory_.path());
  }

  void RestoreDesk() {
    for (const auto& [name, from] : back_) {
      const std::string bytes = files::ReadWholeFile(from);
      std::error_code error;
      const fs::path path = options_.folder / name;
      if (fs::exists(path, error) && files::ReadWholeFile(path) == bytes) continue;
      Step("bring back a file");
      files::MakePrivateDirectories(path.parent_path());
      files::AtomicFile file(path);
      file.Write(bytes);
      file.Commit();
      ++results_.desk;
    }
    if (removals_.empty()) return;
    Step("remove files");
    for (const DeskOutcome& outcome : folder_.Edit(removals_, state_.trash())) {
      if (outcome.refused) {
        results_.problems.push_back(
            fmt::format("{}: {}", outcome.item.file.string(), fmt::join(outcome.losses, "; ")));
      } else {
        ++results_.desk;
      }
    }
  }

  void RestoreHandheld() {
    if (records_.empty()) return;
    Step("send to the handheld");
    std::size_t next = 0;
    PushSession session(
        connection_, {}, mapping_, [&](const PushResult& result) { Take(oids_[next++], result); },
        &recovery_);
    session.Run(records_);
  }

  void Take(Oid oid, const PushResult& result) {
    switch (result.outcome) {
      case PushOutcome::kAdded:
      case PushOutcome::kAddedAnew:
      case PushOutcome::kChanged:
      case PushOutcome::kUnchanged:
        if (result.oid != oid) moved_[oid] = result.oid;
        ++results_.handheld;
        return;
      case PushOutcome::kDeleted:
      case PushOutcome::kNotFound:
        ++results_.handheld;
        return;
      default:
        results_.problems.push_back(fmt::format(
            "{} {} on the handheld: not brought back{}", result.record->kind, result.record->place,
            result.code == 0 ? std::string() : ": " + StatusText(result.code)));
    }
  }

  // That of then, in which what the handheld has under another OID by now is told so.
  void RestoreMemory() {
    const fs::path beside = state_.memory().string() + ".new";
    {
      files::AtomicFile file(beside, files::Access::kPrivate);
      file.Write(files::ReadWholeFile(history_.MemoryOf(runs_.front().time)));
      file.Commit();
    }
    {
      Database database(beside, Database::Open::kExisting);
      Transaction transaction(database);
      Query move(database, "UPDATE link SET oid = ? WHERE oid = ?");
      for (const auto& [from, to] : moved_)
        move.With(std::int64_t{to}).With(std::int64_t{from}).Run();
      transaction.Commit();
    }
    Step("remember");
    fs::rename(beside, state_.memory());
    files::SyncDirectoryOf(state_.memory());
    std::vector<Oid> oids;
    for (const auto& [oid, item] : mapping_.items()) oids.push_back(oid);
    for (const Oid oid : oids) mapping_.Remove(oid);
  }

  const ConnectionOptions& connection_;
  const RestoreOptions& options_;
  StateFolder state_;
  const History history_;
  const std::vector<SavedRun> runs_;  // the one that is meant, and those after it
  Memory memory_;
  Mapping mapping_;
  PushRecovery recovery_;
  calendar::Zone zone_;
  DeskFolder folder_;
  Sides sides_;
  std::map<std::string, fs::path> back_;  // files to bring back, and what they held
  std::vector<DeskEdit> removals_;
  std::vector<PushRecord> records_;
  std::vector<Oid> oids_;  // what they were then
  std::map<Oid, Oid> moved_;
  RestoreResults results_;
};

}  // namespace

std::vector<SavedRun> RestorableRuns(const fs::path& folder) {
  return History(StateOf(folder) / kStateName / "history").Runs();
}

RestoreResults Restore(const ConnectionOptions& connection, const RestoreOptions& options) {
  return RestoreRun(connection, options).Run();
}

}  // namespace desktop
