#include "desktop/sync/restore.h"

#include <fmt/format.h>

#include <algorithm>
#include <cstdint>
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
#include "desktop/folder/plain_file.h"
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
        run_(RunFrom(history_.Runs(), options.time)),
        desk_(history_.Desk()),
        memory_(state_.memory(), true),
        mapping_(state_.mapping()),
        recovery_(connection, mapping_, options.quiet),
        zone_(KnownZone(memory_)),
        folder_(options.folder, zone_) {}

  RestoreResults Run() {
    results_.time = run_.time;
    AdoptUnheardOf(memory_, mapping_, recovery_);
    ReadSides();
    Save();
    PlanDesk();
    PlanHandheld();
    RestoreDesk();
    RestoreHandheld();
    if (results_.problems.empty()) RestoreMemory();
    mapping_.Save();
    return std::move(results_);
  }

 private:
  static SavedRun RunFrom(const std::vector<SavedRun>& runs, const std::string& time) {
    if (runs.empty()) throw Error("there is nothing in the history");
    const auto found =
        time == "latest" ? std::prev(runs.end()) : std::ranges::find(runs, time, &SavedRun::time);
    if (found == runs.end()) throw Error(fmt::format("there is no {} in the history", time));
    return *found;
  }

  void Step(std::string_view what) const {
    if (options_.hook) options_.hook(what);
  }

  void ReadSides() {
    for (const ItemKind kind : run_.kinds) {
      sides_.handheld[kind] = ReadHandheld(connection_, kind, zone_, KnownRecords());
    }
  }

  void PlanDesk() {
    now_ = desk_.Before(saved_);
    back_ = desk_.Before(run_.time);
    for (const auto& [name, number] : now_) {
      const auto then = back_.find(name);
      if (then == back_.end()) {
        removals_.push_back(name);
      } else if (then->second == number) {
        back_.erase(then);
      }
    }
  }

  void PlanHandheld() {
    std::unordered_map<Oid, const HandheldItem*> now;
    for (const auto& [kind, items] : sides_.handheld) {
      for (const HandheldItem& item : items) now.emplace(item.oid, &item);
    }
    std::set<Oid> wanted;
    const std::string then = files::ReadWholeFile(history_.HandheldOf(run_.time));
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
    saved_ = history_.NewTime(now);
    Step("save the history");
    history_.Save({saved_, "before restoring " + results_.time, run_.kinds}, folder_, sides_,
                  memory_.path());
  }

  // Whether the file is what has been saved of it, or is not there as it was not.
  bool IsAsSaved(const std::string& name) {
    const auto saved = now_.find(name);
    const fs::path path = options_.folder / name;
    std::error_code error;
    const bool there = fs::exists(fs::symlink_status(path, error));
    const bool same = there == (saved != now_.end()) &&
                      (!there || ReadPlainFile(path).bytes == desk_.BytesOf(saved->second));
    if (!same) results_.problems.push_back(name + ": it has been changed meanwhile");
    return same;
  }

  void RestoreDesk() {
    for (const auto& [name, number] : back_) {
      if (!IsAsSaved(name)) continue;
      Step("bring back a file");
      const fs::path path = options_.folder / name;
      files::MakePrivateDirectories(path.parent_path());
      files::AtomicFile file(path);
      file.Write(desk_.BytesOf(number));
      file.Commit();
      ++results_.desk;
    }
    for (const std::string& name : removals_) {
      if (!IsAsSaved(name)) continue;
      Step("remove a file");
      const fs::path trash = state_.trash() / name;
      files::MakePrivateDirectories(trash.parent_path());
      MoveToFreeName(options_.folder / name, trash);
      ++results_.desk;
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
      file.Write(files::ReadWholeFile(history_.MemoryOf(run_.time)));
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
  const SavedRun run_;  // the one that is meant
  const DeskHistory desk_;
  Memory memory_;
  Mapping mapping_;
  PushRecovery recovery_;
  calendar::Zone zone_;
  DeskFolder folder_;
  Sides sides_;
  std::string saved_;                         // the run that this is in the history
  std::map<std::string, std::int64_t> now_;   // files, and what the history calls their content
  std::map<std::string, std::int64_t> back_;  // those to be brought back
  std::vector<std::string> removals_;
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
