#include "desktop/sync/memory.h"

#include <fcntl.h>
#include <fmt/format.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <iterator>
#include <system_error>

#include "common/files/atomic_file.h"
#include "desktop/sync/kept_item.h"
#include "desktop/wire/error.h"

namespace desktop {
namespace {

constexpr std::int64_t kMemoryVersion = 3;

constexpr char kSchema[] = R"(
BEGIN;
CREATE TABLE link (number INTEGER PRIMARY KEY, kind INTEGER NOT NULL, key TEXT NOT NULL,
  file TEXT NOT NULL, line INTEGER NOT NULL, oid INTEGER NOT NULL, record_hash TEXT NOT NULL);
CREATE TABLE bases (number INTEGER PRIMARY KEY REFERENCES link ON DELETE CASCADE,
  desk BLOB NOT NULL, record BLOB NOT NULL);
CREATE TABLE intent (kind INTEGER NOT NULL, uid TEXT NOT NULL, oid INTEGER NOT NULL,
  record_hash TEXT NOT NULL, PRIMARY KEY (kind, uid));
CREATE TABLE file (name TEXT PRIMARY KEY, stamp TEXT NOT NULL);
CREATE TABLE note (name TEXT PRIMARY KEY, value TEXT NOT NULL);
PRAGMA user_version = 3;
COMMIT;
)";

// It gets its name once it is whole.
void MakeMemory(const std::filesystem::path& path) {
  const std::filesystem::path beside = path.string() + ".new";
  for (const char* const suffix : {"", "-journal"}) {
    std::error_code error;
    std::filesystem::remove(beside.string() + suffix, error);
  }
  const int file = open(beside.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, 0600);
  if (file < 0) {
    throw Error(fmt::format("cannot write {}: {}", beside.string(), std::strerror(errno)));
  }
  close(file);
  Database(beside, Database::Open::kExisting).Run(kSchema);
  std::filesystem::rename(beside, path);
  files::SyncDirectoryOf(path);
}

std::filesystem::path Made(const std::filesystem::path& path, bool mustExist) {
  std::error_code error;
  if (std::filesystem::exists(path, error)) return path;
  if (mustExist) {
    throw Error(fmt::format(
        "{} is not there any more. It tells which item of the folder is which on the handheld: "
        "bring it back, from {} for instance; or move {} away, and what is the same on both sides "
        "is found again",
        path.string(), (path.parent_path() / "history").string(), path.parent_path().string()));
  }
  MakeMemory(path);
  return path;
}

[[noreturn]] void RefuseMemory(const std::filesystem::path& path, std::string_view why) {
  throw Error(fmt::format(
      "what is remembered of the folder cannot be understood ({}). Bring back a good copy, from {} "
      "for instance; or move {} away, and what is the same on both sides is found again",
      why, (path.parent_path() / "history").string(), path.parent_path().string()));
}

}  // namespace

Memory::Memory(const std::filesystem::path& path, bool mustExist)
    : database_(Made(path, mustExist), Database::Open::kExisting) {
  try {
    database_.Run("PRAGMA synchronous = FULL; PRAGMA foreign_keys = ON;");
    Query version(database_, "PRAGMA user_version");
    version.Step();
    if (version.Number(0) != kMemoryVersion) {
      throw Error(fmt::format("{}: it has version {}", path.string(), version.Number(0)));
    }
    Load();
  } catch (const Error& problem) {
    RefuseMemory(path, problem.what());
  }
}

void Memory::Load() {
  links_.clear();
  intents_.clear();
  stamps_.clear();
  Query links(database_,
              "SELECT number, kind, key, file, line, oid, record_hash FROM link "
              "ORDER BY number");
  while (links.Step()) {
    links_.push_back({links.Number(0), static_cast<ItemKind>(links.Number(1)), links.Text(2),
                      links.Text(3), static_cast<std::size_t>(links.Number(4)),
                      static_cast<Oid>(links.Number(5)), links.Text(6)});
  }
  Query intents(database_, "SELECT kind, uid, oid, record_hash FROM intent ORDER BY oid");
  while (intents.Step()) {
    intents_.push_back({static_cast<ItemKind>(intents.Number(0)), intents.Text(1),
                        static_cast<Oid>(intents.Number(2)), intents.Text(3)});
  }
  Query files(database_, "SELECT name, stamp FROM file ORDER BY name");
  while (files.Step()) stamps_.emplace_hint(stamps_.end(), files.Text(0), files.Text(1));
}

Bases Memory::BasesOf(const Link& link) const {
  try {
    Query query(database_, "SELECT desk, record FROM bases WHERE number = ?");
    if (!query.With(link.number).Step()) throw Error("an item is not there");
    return {ItemFromKept(query.Text(0)), query.Text(1)};
  } catch (const Error& problem) {
    RefuseMemory(database_.path(), problem.what());
  }
}

DeskFiles Memory::Desk() const {
  DeskFiles desk;
  for (const auto& [name, stamp] : stamps_) {
    desk.emplace_hint(desk.end(), name, DeskFile{stamp, true, {}});
  }
  Query bases(database_, "SELECT number, desk FROM bases ORDER BY number");
  try {
    for (const Link& link : links_) {
      if (!bases.Step() || bases.Number(0) != link.number) throw Error("an item is not there");
      desk[link.file].items.push_back(
          {link.file, link.line, link.key, ItemFromKept(bases.Text(1))});
    }
  } catch (const Error& problem) {
    RefuseMemory(database_.path(), problem.what());
  }
  for (auto& [name, file] : desk) std::ranges::stable_sort(file.items, {}, &DeskItem::line);
  return desk;
}

std::string Memory::Note(std::string_view name) const {
  Query query(database_, "SELECT value FROM note WHERE name = ?");
  return query.With(name).Step() ? query.Text(0) : std::string();
}

Memory::Changes::Changes(Memory& memory)
    : memory_(memory),
      transaction_(memory.database_),
      changesBefore_(memory.database_.changes()),
      add_(memory.database_,
           "INSERT INTO link (kind, key, file, line, oid, record_hash) "
           "VALUES (?, ?, ?, ?, ?, ?)"),
      change_(memory.database_, "UPDATE bases SET desk = ?, record = ? WHERE number = ?"),
      touch_(memory.database_,
             "UPDATE link SET kind = ?, key = ?, file = ?, line = ?, oid = ?, record_hash = ? "
             "WHERE number = ?"),
      remove_(memory.database_, "DELETE FROM link WHERE number = ?"),
      addBases_(memory.database_, "INSERT INTO bases (number, desk, record) VALUES (?, ?, ?)") {}

void Memory::Changes::BindPlace(Query& query, const Link& link) const {
  query.With(static_cast<std::int64_t>(link.kind))
      .With(link.key)
      .With(link.file)
      .With(static_cast<std::int64_t>(link.line))
      .With(std::int64_t{link.oid})
      .With(link.recordHash);
}

void Memory::Changes::SetNote(std::string_view name, std::string_view value) {
  if (memory_.Note(name) == value) return;
  Query(memory_.database_, "INSERT OR REPLACE INTO note (name, value) VALUES (?, ?)")
      .With(name)
      .With(value)
      .Run();
}

void Memory::Changes::Put(const Link& link, const Item& desk, std::string_view record) {
  const std::string kept = KeptItem(desk);
  if (link.number != 0) {
    Touch(link);
    change_.WithBytes(kept).WithBytes(record).With(link.number).Run();
    return;
  }
  BindPlace(add_, link);
  add_.Run();
  addBases_.With(memory_.database_.lastInserted()).WithBytes(kept).WithBytes(record).Run();
}

void Memory::Changes::Touch(const Link& link) {
  BindPlace(touch_, link);
  touch_.With(link.number).Run();
}

void Memory::Changes::Remove(const Link& link) {
  remove_.With(link.number).Run();
}

void Memory::Changes::ExpectOnDesk(const std::vector<Intent>& intents) {
  Query add(memory_.database_,
            "INSERT OR REPLACE INTO intent (kind, uid, oid, record_hash) "
            "VALUES (?, ?, ?, ?)");
  for (const Intent& intent : intents) {
    add.With(static_cast<std::int64_t>(intent.kind))
        .With(intent.uid)
        .With(std::int64_t{intent.oid})
        .With(intent.recordHash)
        .Run();
  }
}

void Memory::Changes::ForgetIntents() {
  if (!memory_.intents_.empty()) memory_.database_.Run("DELETE FROM intent");
}

void Memory::Changes::SetStamps(const FileStamps& stamps) {
  const auto forEachOnlyIn = [](const FileStamps& in, const FileStamps& notIn, const auto& take) {
    FileStamps only;
    std::ranges::set_difference(in, notIn, std::inserter(only, only.end()));
    for (const auto& [name, stamp] : only) take(name, stamp);
  };
  Query remove(memory_.database_, "DELETE FROM file WHERE name = ?");
  Query add(memory_.database_, "INSERT INTO file (name, stamp) VALUES (?, ?)");
  forEachOnlyIn(memory_.stamps_, stamps,
                [&](const std::string& name, const std::string&) { remove.With(name).Run(); });
  forEachOnlyIn(stamps, memory_.stamps_, [&](const std::string& name, const std::string& stamp) {
    add.With(name).With(stamp).Run();
  });
}

void Memory::Changes::Commit() {
  const bool changed = memory_.database_.changes() != changesBefore_;
  transaction_.Commit();
  if (changed) memory_.Load();
}

}  // namespace desktop
