#include "desktop/sync/desk_history.h"

#include <fmt/format.h>

#include <utility>
#include <vector>

#include "desktop/folder/plain_file.h"
#include "desktop/wire/error.h"

namespace desktop {
namespace {

// A row is what its file held before the runs from `since` on, up to but without `until`; without
// one, up to the last.
constexpr char kTables[] = R"(
PRAGMA synchronous = FULL;
CREATE TABLE IF NOT EXISTS run (time TEXT PRIMARY KEY);
CREATE TABLE IF NOT EXISTS content (number INTEGER PRIMARY KEY, name TEXT NOT NULL,
  stamp TEXT NOT NULL, bytes BLOB NOT NULL, since TEXT NOT NULL, until TEXT);
)";

}  // namespace

DeskHistory::DeskHistory(const std::filesystem::path& path, Database::Open open)
    : database_(path, open) {
  database_.Run(kTables);
}

std::map<std::string, DeskHistory::Kept> DeskHistory::Latest() const {
  std::map<std::string, Kept> latest;
  Query rows(database_, "SELECT name, number, stamp FROM content WHERE until IS NULL");
  while (rows.Step()) latest[rows.Text(0)] = {rows.Number(1), rows.Text(2)};
  return latest;
}

void DeskHistory::Save(const std::string& time, const DeskFolder& folder) {
  Transaction transaction(database_);
  // Of a run that was broken off before it had its place in the history.
  Query(database_, "DELETE FROM run WHERE time >= ?").With(time).Run();
  Query(database_, "UPDATE content SET since = ? WHERE since > ?").With(time).With(time).Run();
  Query(database_, "UPDATE content SET until = ? WHERE until > ?").With(time).With(time).Run();
  Query(database_, "INSERT INTO run VALUES (?)").With(time).Run();

  Query add(database_, "INSERT INTO content (name, stamp, bytes, since) VALUES (?, ?, ?, ?)");
  Query look(database_, "UPDATE content SET stamp = ? WHERE number = ?");
  Query end(database_, "UPDATE content SET until = ? WHERE number = ?");
  std::map<std::string, Kept> before = Latest();
  for (const auto& [name, stamp] : folder.Stamps()) {
    const auto known = before.find(name);
    if (known != before.end() && !stamp.empty() && known->second.stamp == stamp) {
      before.erase(known);
      continue;
    }
    std::string bytes;
    try {
      bytes = ReadPlainFile(folder.root() / name).bytes;
    } catch (const Error&) {
      // Gone, or not to be read by a synchronisation either: it stays as it is.
      before.erase(name);
      continue;
    }
    if (known != before.end() && BytesOf(known->second.number) == bytes) {
      look.With(stamp).With(known->second.number).Run();
      before.erase(known);
    } else {
      add.With(name).With(stamp).WithBytes(bytes).With(time).Run();
    }
  }
  for (const auto& [name, ended] : before) end.With(time).With(ended.number).Run();
  transaction.Commit();
}

std::map<std::string, std::int64_t> DeskHistory::Before(const std::string& time) const {
  Query run(database_, "SELECT 1 FROM run WHERE time = ?");
  if (!run.With(time).Step()) {
    throw Error(fmt::format("{} does not know what the desk had before {}",
                            database_.path().string(), time));
  }
  std::map<std::string, std::int64_t> files;
  Query rows(database_,
             "SELECT name, number FROM content "
             "WHERE since <= ? AND (until IS NULL OR until > ?)");
  rows.With(time).With(time);
  while (rows.Step()) files.emplace(rows.Text(0), rows.Number(1));
  return files;
}

std::string DeskHistory::BytesOf(std::int64_t number) const {
  Query row(database_, "SELECT bytes FROM content WHERE number = ?");
  return row.With(number).Step() ? row.Text(0) : std::string();
}

void DeskHistory::Keep(const std::set<std::string>& times) {
  Transaction transaction(database_);
  std::vector<std::string> gone;
  {
    Query runs(database_, "SELECT time FROM run");
    while (runs.Step()) {
      if (std::string time = runs.Text(0); !times.contains(time)) gone.push_back(std::move(time));
    }
  }
  Query forget(database_, "DELETE FROM run WHERE time = ?");
  for (const std::string& time : gone) forget.With(time).Run();
  database_.Run(
      "DELETE FROM content WHERE until IS NOT NULL AND NOT EXISTS "
      "(SELECT 1 FROM run WHERE time >= since AND time < until)");
  transaction.Commit();
}

}  // namespace desktop
