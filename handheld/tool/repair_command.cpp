#include "handheld/tool/repair_command.h"

#include <fmt/core.h>

#include <string>
#include <system_error>
#include <vector>

#include "common/files/atomic_file.h"
#include "common/files/error.h"
#include "handheld/salvage/store_salvage.h"
#include "handheld/store/store_check.h"
#include "handheld/tool/handheld_copy.h"
#include "handheld/tool/result.h"

namespace tool {
namespace {

namespace fs = std::filesystem;

fs::path With(fs::path path, const std::string& suffix) {
  path += suffix;
  return path;
}

void CopyIfThere(const fs::path& from, const fs::path& to) {
  std::error_code error;
  if (!fs::exists(from, error)) return;
  if (!fs::copy_file(from, to, error))
    throw files::Error(from.string() + " cannot be copied: " + error.message());
}

// What a damaged store is to be called: the first name that nothing has, or that which an exchange
// that was cut short has given it.
fs::path NameAside(const fs::path& store) {
  fs::path name = With(store, ".damaged");
  std::error_code error;
  for (int n = 2; fs::exists(name, error) || fs::exists(With(name, "-wal"), error); ++n) {
    if (fs::equivalent(name, store, error)) break;
    name = With(store, ".damaged-" + std::to_string(n));
  }
  return name;
}

// Whether an exchange was cut short when the store had its new name already: its log is aside.
bool IsBeingExchanged(const fs::path& store) {
  std::error_code error;
  return fs::equivalent(NameAside(store), store, error);
}

// The store, and its log of what was written last, which belongs to it and may be aside already.
void CopyDamaged(const fs::path& store, const fs::path& to) {
  CopyIfThere(store, to);
  const fs::path log = With(store, "-wal");
  CopyIfThere(fs::exists(log) ? log : With(NameAside(store), "-wal"), With(to, "-wal"));
}

// What the damaged store is called now.
fs::path Exchange(const fs::path& store, const fs::path& saved) try {
  fs::path aside = NameAside(store);
  if (!fs::exists(aside)) fs::create_hard_link(store, aside);
  files::SyncDirectoryOf(store);
  // The log must not meet the new store.
  fs::remove(With(store, "-shm"));
  const fs::path log = With(store, "-wal");
  if (fs::exists(log)) fs::rename(log, With(aside, "-wal"));
  fs::rename(saved, store);
  files::SyncDirectoryOf(store);
  return aside;
} catch (const fs::filesystem_error& error) {
  throw files::Error(store.string() + " cannot be replaced: " + error.code().message());
}

Json AsJson(const ce::host::Salvage& salvage, bool written) {
  auto saved = Json::object();
  for (const auto& [table, rows] : salvage.saved) saved[table] = rows;
  return {{"sound", false}, {"saved", saved}, {"lost", salvage.lost}, {"written", written}};
}

}  // namespace

Outcome Repair(Session& session, bool write, const Report& report) {
  const ce::host::Handheld& handheld = session.handheld();
  if (ce::host::CheckStore(handheld).empty() && !IsBeingExchanged(handheld.storePath())) {
    // One that was killed behind the exchange left a copy of the damaged store.
    RemoveAbandoned(handheld.directory());
    TellResult(report, {{"sound", true}}, "The store is sound.\n");
    return Outcome::kDone;
  }
  const fs::path store = handheld.storePath();
  const WorkDirectory work(handheld.directory());
  const fs::path damaged = work.path() / "damaged.db";
  const fs::path saved = work.path() / "saved.db";
  CopyDamaged(store, damaged);
  ce::host::Salvage salvage;
  std::string problem;
  if (ce::Failed(ce::host::SalvageStore(damaged, saved, salvage, problem)))
    throw files::Error(store.string() + ": nothing can be saved: it " + problem);
  // What could be read may still make no sense. An error of the disk may not come again.
  std::vector<std::string> left = ce::host::CheckStore(handheld, saved);
  if (!left.empty()) left = ce::host::CheckStore(handheld, saved);
  salvage.lost.insert(salvage.lost.end(), left.begin(), left.end());
  fs::path aside;
  if (write) {
    fs::permissions(saved, fs::perms::owner_read | fs::perms::owner_write);
    aside = Exchange(store, saved);
  }
  if (report.json) {
    TellJson(report, AsJson(salvage, write));
  } else {
    for (const auto& [table, rows] : salvage.saved)
      Tell(report.out, "{}: {} {}\n", table, rows, write ? "saved" : "can be saved");
    for (const std::string& lost : salvage.lost) Tell(report.out, "lost: {}\n", lost);
    if (write)
      Tell(report.out, "The damaged store is now {}.\n", aside.string());
    else
      Tell(report.out, "Nothing has been changed: that takes --write.\n");
  }
  return salvage.lost.empty() ? Outcome::kDone : Outcome::kPartlyDone;
}

}  // namespace tool
