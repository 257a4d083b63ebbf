#include "handheld/store/store_salvage.h"

#include <sqlite3.h>

#include <algorithm>
#include <map>
#include <memory>
#include <set>
#include <string_view>

#include "handheld/base/fault.h"
#include "handheld/store/schema_pages.h"
#include "handheld/store/store_error.h"
#include "handheld/store/store_schema.h"
#include "platform/status.h"

namespace ce::host {
namespace {

constexpr std::size_t kMostLost = 200;
// So many identifiers in a row are tried one by one before the steps grow.
constexpr int kSingleSteps = 10000;
// So often a table that is read in order may go back to earlier rows: as often as a page has
// others.
constexpr int kMostTurns = 1000;
constexpr std::int64_t kLast = INT64_MAX;  // that a row can have
constexpr std::int64_t kNone = kLast;

// What gives identifiers away: what was the last one by its own account and by the tables that have
// them, and how it goes on.
struct Counter {
  const char* lastGiven;
  const char* lastUsed;
  const char* raise;  // ?1 is the last one given
};
constexpr Counter kOids = {
    "SELECT next_oid - 1 FROM oid_counter",
    "SELECT max(oid) FROM (SELECT max(oid) AS oid FROM contacts UNION ALL "
    "SELECT max(oid) FROM appointments UNION ALL SELECT max(oid) FROM tasks)",
    "UPDATE oid_counter SET next_oid = min(?1, 4294967295) + 1"};
constexpr Counter kMessageIds = {
    "SELECT next_id - 1 FROM message_id_counter",
    "SELECT max(id) FROM (SELECT max(id) AS id FROM message_stores UNION ALL "
    "SELECT max(id) FROM message_folders UNION ALL SELECT max(id) FROM messages)",
    "UPDATE message_id_counter SET next_id = max(next_id, ?1 + 1)"};
constexpr Counter kCallIds = {
    "SELECT seq FROM sqlite_sequence WHERE name = 'calls'", "SELECT max(id) FROM calls",
    "INSERT OR REPLACE INTO sqlite_sequence (rowid, name, seq) VALUES (1, 'calls', ?1)"};

// Tables whose rows have a number each, those first that others refer to.
struct NumberedTable {
  const char* name;
  const char* noun;
  const Counter* counter;
  bool hasRowsFromTheStart = false;  // so that a new store has some that this one may lack
};
constexpr NumberedTable kNumberedTables[] = {
    {"contacts", "contact", &kOids},
    {"appointments", "appointment", &kOids},
    {"tasks", "task", &kOids},
    {"exceptions", "the exception in row", nullptr},
    {"message_stores", "message store", &kMessageIds, true},
    {"message_folders", "message folder", &kMessageIds, true},
    {"messages", "message", &kMessageIds},
    {"calls", "call", &kCallIds},
};

// Whether what failed is the reading of this row, so that others may be had.
bool IsLoss(int result) {
  const int code = result & 0xFF;
  return code == SQLITE_CORRUPT || code == SQLITE_NOTADB || code == SQLITE_CONSTRAINT ||
         code == SQLITE_MISMATCH || code == SQLITE_TOOBIG || result == SQLITE_IOERR_SHORT_READ ||
         result == SQLITE_IOERR_CORRUPTFS;
}

struct CloseDatabase {
  void operator()(sqlite3* database) const { sqlite3_close(database); }
};
struct FinalizeStatement {
  void operator()(sqlite3_stmt* statement) const { sqlite3_finalize(statement); }
};

// What cannot be read is tried once more: SQLite calls an error of the disk damage, too, and it may
// not come again.
class Query {
 public:
  Query(sqlite3* database, const std::string& sql) {
    sqlite3_stmt* statement = nullptr;
    for (int tries = 0; tries == 0 || (tries == 1 && IsLoss(prepared_)); ++tries)
      prepared_ = sqlite3_prepare_v2(database, sql.c_str(), -1, &statement, nullptr);
    statement_.reset(statement);
  }

  sqlite3_stmt* statement() const { return statement_.get(); }
  std::int64_t Integer(int column) const { return sqlite3_column_int64(statement(), column); }
  std::string_view Text(int column) const {
    const auto* text = reinterpret_cast<const char*>(sqlite3_column_text(statement(), column));
    return text ? text : "";
  }

  // SQLite's result code.
  int Step() {
    if (!statement_) return prepared_;
    if (Failed(FaultStatus("sqlite3_step:salvage"))) return SQLITE_IOERR_WRITE;
    return sqlite3_step(statement());
  }
  // For INSERT: with the values of another query's row, from this column on.
  int RunWithRowOf(const Query& other, int first = 0) {
    sqlite3_reset(statement());
    int result = prepared_;
    for (int i = first; result == SQLITE_OK && i < sqlite3_column_count(other.statement()); ++i)
      result = sqlite3_bind_value(statement(), i - first + 1,
                                  sqlite3_column_value(other.statement(), i));
    return result == SQLITE_OK ? Step() : result;
  }
  // From the start, with this number bound to the parameter, if there is one.
  int Run(std::int64_t number = 0) {
    const int result = RunOnce(number);
    return IsLoss(result) ? RunOnce(number) : result;
  }

 private:
  int RunOnce(std::int64_t number) {
    sqlite3_reset(statement());
    sqlite3_bind_int64(statement(), 1, number);
    return Step();
  }

  std::unique_ptr<sqlite3_stmt, FinalizeStatement> statement_;
  int prepared_ = SQLITE_OK;
};

class Salvager {
 public:
  Salvager(sqlite3* damaged, sqlite3* fresh, Salvage& salvage)
      : damaged_(damaged), fresh_(fresh), salvage_(salvage) {}

  // S_OK also when rows are lost.
  HRESULT Run() {
    for (const NumberedTable& table : kNumberedTables) SaveNumbered(table);
    SaveRecipients();
    SaveLedger();
    MendReferences();
    for (const Counter* counter : {&kOids, &kMessageIds, &kCallIds}) Raise(*counter);
    if (unnamed_ > 0) salvage_.lost.push_back("and " + std::to_string(unnamed_) + " more");
    return status_;
  }

 private:
  void Lose(std::string what) {
    if (salvage_.lost.size() < kMostLost)
      salvage_.lost.push_back(std::move(what));
    else
      ++unnamed_;
  }
  // A loss is for the caller to name; anything else that went wrong ends it all.
  int Seen(int result) {
    if (Succeeded(status_) && !IsLoss(result)) status_ = StoreStatus(result);
    return result;
  }
  bool IsRow(int result) { return Seen(result) == SQLITE_ROW; }
  // Whether a statement without rows, or the end of one with rows, went well.
  bool IsDone(int result) { return Seen(result) == SQLITE_DONE; }
  void Execute(const std::string& sql) {
    Query query(fresh_, sql);
    Seen(query.Run());
  }
  std::int64_t Number(sqlite3* database, const std::string& sql) {
    Query query(database, sql);
    const int result = query.Run();
    if (result != SQLITE_ERROR) Seen(result);  // an older store may lack the table
    return result == SQLITE_ROW ? query.Integer(0) : 0;
  }
  // An older store lacks the later tables.
  bool Has(const std::string& table) {
    Query query(damaged_, "SELECT 1 FROM sqlite_schema WHERE name = '" + table + "'");
    const int result = query.Run();
    if (IsLoss(result)) Lose(table + ": cannot be read");
    return IsRow(result);
  }
  // Whether all that is in the table and its indexes can be found in its order.
  bool IsSound(const std::string& table) {
    Query check(damaged_, "PRAGMA integrity_check('" + table + "')");
    bool isSound = false;
    for (int tries = 0; !isSound && tries < 2; ++tries)
      isSound = IsRow(check.Run()) && check.Text(0) == "ok";
    return isSound;
  }
  Query InsertInto(const std::string& table) {
    std::string values = "?";
    for (auto n = Number(fresh_, "SELECT count(*) FROM pragma_table_info('" + table + "')"); n > 1;
         --n)
      values += ",?";
    return {fresh_, "INSERT OR REPLACE INTO " + table + " VALUES (" + values + ")"};
  }
  // Saves the rows that are left of a query, the first of which it has been stepped to with
  // `result`. False when some are lost.
  bool SaveRows(Query& rows, int result, Query& insert) {
    for (; result == SQLITE_ROW && Succeeded(status_); result = rows.Step()) {
      if (Seen(insert.RunWithRowOf(rows)) != SQLITE_DONE) return false;
    }
    return IsDone(result);
  }

  void SaveNumbered(const NumberedTable& table) {
    const std::string name = table.name;
    if (!Has(name)) return;
    Query insert = InsertInto(name);
    std::set<std::int64_t> saved;
    named_.clear();
    const std::size_t lost = salvage_.lost.size();
    bool whole = SaveInOrder(name, insert, saved) || SaveOneByOne(table, insert, saved);
    whole = !TellOfHidden(table, saved, salvage_.lost.size() > lost) && whole;
    if (!saved.empty()) salvage_.saved.emplace_back(name, saved.size());
    if (table.hasRowsFromTheStart && whole) KeepOnly(name, saved);
  }

  // Saves the rows that the whole tree leads to. Whether these are all for certain.
  bool SaveInOrder(const std::string& name, Query& insert, std::set<std::int64_t>& saved) {
    Query rows(damaged_, "SELECT rowid, * FROM " + name + " NOT INDEXED WHERE rowid > 0");
    std::int64_t last = 0;
    int turns = 0;
    int result;
    while ((result = rows.Step()) == SQLITE_ROW && turns < kMostTurns) {
      const std::int64_t number = rows.Integer(0);
      // What leads back to earlier rows, or past them, leads no longer to others.
      if (number <= last && turns++ == 0) LoseOrder(name);
      last = number;
      if (Seen(insert.RunWithRowOf(rows, 1)) != SQLITE_DONE) return false;
      saved.insert(number);
    }
    return IsDone(result) && turns == 0;
  }

  // Goes round what cannot be read. Whether no row is lost.
  bool SaveOneByOne(const NumberedTable& table, Query& insert, std::set<std::int64_t>& saved) {
    const std::string from = std::string(" FROM ") + table.name + " NOT INDEXED WHERE rowid ";
    Query next(damaged_, "SELECT rowid" + from + ">= ?1 ORDER BY rowid LIMIT 1");
    Query row(damaged_, "SELECT *" + from + "= ?1");
    bool whole = true;
    bool isInOrder = true;
    std::int64_t number = 1;
    int result;
    while (!IsDone(result = next.Run(number)) && Succeeded(status_)) {
      std::int64_t last = number;
      bool toTheEnd = false;
      // A damaged tree may lead back to rows that have been there.
      if (result == SQLITE_ROW && next.Integer(0) >= number) {
        number = last = next.Integer(0);
        const bool isSaved = saved.contains(number);
        const int found = isSaved ? SQLITE_DONE : row.Run(number);
        // Not where its number says: what lies between was passed over.
        if (!isSaved && found == SQLITE_DONE && isInOrder) LoseOrder(table.name);
        isInOrder = isInOrder && (isSaved || found != SQLITE_DONE);
        if (found == SQLITE_ROW && SaveRows(row, found, insert)) saved.insert(number);
        if (saved.contains(number)) {
          if (number++ == kLast) break;
          continue;
        }
      } else {
        const std::int64_t readable = FirstReadable(next, number);
        toTheEnd = readable == kNone;
        last = toTheEnd ? std::max(number, LastGiven(table)) : readable - 1;
      }
      whole = false;
      LoseRange(table, number, last);
      if (toTheEnd || last == kLast) break;
      number = last + 1;
    }
    return whole;
  }

  // A damaged tree may leave rows out without an error. The table's indexes, where it has some,
  // still name them. Whether it did.
  bool TellOfHidden(const NumberedTable& table, const std::set<std::int64_t>& saved, bool isTold) {
    const std::string name = table.name;
    std::set<std::int64_t> indexed;
    bool hasIndex = false;
    Query indexes(damaged_, "SELECT name FROM pragma_index_list('" + name + "')");
    while (Seen(indexes.Step()) == SQLITE_ROW) {
      hasIndex = true;
      std::string all = "SELECT rowid FROM " + name + " INDEXED BY ";
      Query rows(damaged_, all.append(indexes.Text(0)));
      // A damaged index may name the same ones again and again.
      for (std::size_t steps = 0; Seen(rows.Step()) == SQLITE_ROW; ++steps) {
        indexed.insert(rows.Integer(0));
        if (steps > 4 * indexed.size() + kMostTurns) break;
      }
    }
    bool hides = false;
    for (const std::int64_t number : indexed) {
      if (saved.contains(number) || IsNamed(number)) continue;
      Lose(std::string(table.noun) + ' ' + std::to_string(number) + ": cannot be read");
      hides = true;
    }
    if (hasIndex || isTold || IsSound(name)) return hides;
    Lose(name + ": damaged; some that cannot be named may be lost");
    return true;
  }

  bool IsNamed(std::int64_t number) const {
    return std::any_of(named_.begin(), named_.end(), [&](const auto& range) {
      return range.first <= number && number <= range.second;
    });
  }

  void KeepOnly(const std::string& table, const std::set<std::int64_t>& ids) {
    std::string list;
    for (const std::int64_t id : ids) list += (list.empty() ? "" : ",") + std::to_string(id);
    Execute("DELETE FROM " + table + " WHERE id NOT IN (" + list + ")");
  }

  // The first number from which on rows can be looked for again, kNone when there is none.
  std::int64_t FirstReadable(Query& next, std::int64_t bad) {
    const auto isLost = [&](std::int64_t number) {
      const int result = next.Run(number);
      return IsRow(result) ? next.Integer(0) < number : IsLoss(result);
    };
    if (bad > kNone - kSingleSteps) return kNone;
    std::int64_t good = bad;
    for (int tries = 0; tries < kSingleSteps; ++tries) {
      if (!isLost(++good)) return good;
    }
    for (std::int64_t step = 1; isLost(good); step *= 2) {
      bad = good;
      if (step > kNone / 2 - good) return kNone;
      good += step;
    }
    while (good - bad > 1) {
      const std::int64_t middle = bad + (good - bad) / 2;
      (isLost(middle) ? bad : good) = middle;
    }
    return good;
  }

  void LoseOrder(const std::string& table) {
    Lose(table + ": out of order; some that cannot be named may be lost");
  }

  void LoseRange(const NumberedTable& table, std::int64_t first, std::int64_t last) {
    const std::string name = std::string(table.noun) + ' ' + std::to_string(first);
    Lose(first == last
             ? name + ": cannot be read"
             : name + " to " + std::to_string(last) + ": cannot be read, as far as there were any");
    named_.emplace_back(first, last);
    if (table.counter) lostUpTo_[table.counter] = std::max(lostUpTo_[table.counter], last);
  }

  std::int64_t LastGiven(const NumberedTable& table) {
    return table.counter ? Number(damaged_, table.counter->lastGiven) : 0;
  }

  void SaveRecipients() {
    if (!Has("message_recipients")) return;
    if (!IsSound("message_recipients"))
      Lose("message_recipients: damaged; some that cannot be named may be lost");
    Query messages(fresh_, "SELECT id FROM messages WHERE id >= ?1 ORDER BY id LIMIT 1");
    Query rows(damaged_, "SELECT * FROM message_recipients WHERE message = ?1");
    Query insert = InsertInto("message_recipients");
    for (std::int64_t from = 1; Seen(messages.Run(from)) == SQLITE_ROW && Succeeded(status_);) {
      const std::int64_t message = messages.Integer(0);
      if (!SaveRows(rows, rows.Run(message), insert) && !SaveRows(rows, rows.Run(message), insert))
        Lose("message " + std::to_string(message) + ": its recipients cannot be read");
      if (message == kLast) break;
      from = message + 1;
    }
  }

  // From either end as far as it can be read.
  void SaveLedger() {
    if (!Has("import_ledger")) return;
    Query insert = InsertInto("import_ledger");
    for (const char* order : {"kind, identity", "kind DESC, identity DESC"}) {
      Query rows(damaged_, std::string("SELECT * FROM import_ledger ORDER BY ") + order);
      if (SaveRows(rows, rows.Step(), insert) && IsSound("import_ledger")) return;
    }
    Lose(
        "what was imported cannot be told for all items: imported once more, some may stand twice");
  }

  // Names the rows that `from` gives, by their column `id`, then runs `mend` on them.
  void Mend(const char* id, const std::string& noun, const char* fate, const std::string& mend,
            const std::string& from) {
    Query query(fresh_, std::string("SELECT DISTINCT ") + id + " FROM " + from);
    while (Seen(query.Step()) == SQLITE_ROW)
      Lose(noun + ' ' + std::to_string(query.Integer(0)) + ": " + fate);
    Execute(mend);
  }

  void MendReferences() {
    const std::string lost = "exceptions WHERE oid NOT IN (SELECT oid FROM appointments)";
    Mend("oid", "appointment", "its exceptions are lost with it", "DELETE FROM " + lost, lost);
    const std::string alone =
        " WHERE parent NOT IN (SELECT id FROM message_folders)"
        " OR store NOT IN (SELECT id FROM message_stores)";
    Mend("id", "message folder", "what it lay in is lost; it lies in the telephone's now",
         "UPDATE message_folders SET store = 1, parent = 2" + alone, "message_folders" + alone);
    const std::string homeless = " WHERE folder NOT IN (SELECT id FROM message_folders)";
    Mend("id", "message", "its folder is lost; it lies in the telephone's inbox now",
         "UPDATE messages SET folder = 3" + homeless, "messages" + homeless);
  }

  // No identifier that is known is given away twice, one of what is lost as little as another.
  void Raise(const Counter& counter) {
    Query raise(fresh_, counter.raise);
    Seen(raise.Run(std::max({Number(damaged_, counter.lastGiven), Number(fresh_, counter.lastUsed),
                             lostUpTo_[&counter]})));
  }

  // Two connections: SQLite commits nothing by one that has met damage. That the fresh one cannot
  // be read, which is no loss, fails it all in this way.
  sqlite3* const damaged_;
  sqlite3* const fresh_;
  Salvage& salvage_;
  std::map<const Counter*, std::int64_t> lostUpTo_;
  std::vector<std::pair<std::int64_t, std::int64_t>> named_;  // lost numbers of a table
  std::uint64_t unnamed_ = 0;                                 // losses beyond those that are named
  HRESULT status_ = S_OK;
};

using DatabasePtr = std::unique_ptr<sqlite3, CloseDatabase>;

HRESULT Open(const std::filesystem::path& path, const char* settings, DatabasePtr& database) {
  sqlite3* opened = nullptr;
  const int flags =
      SQLITE_OPEN_READWRITE | SQLITE_OPEN_CREATE | SQLITE_OPEN_NOMUTEX | SQLITE_OPEN_EXRESCODE;
  const int result = sqlite3_open_v2(path.c_str(), &opened, flags, nullptr);
  database.reset(opened);
  if (result != SQLITE_OK) return StoreStatus(result);
  return StoreStatus(sqlite3_exec(opened, settings, nullptr, nullptr, nullptr));
}

HRESULT OpenDamaged(const std::filesystem::path& path, DatabasePtr& database) {
  RETURN_IF_FAILED(
      Open(path, "PRAGMA trusted_schema = OFF; PRAGMA cell_size_check = ON;", database));
  Query tables(database.get(), "SELECT count(*) FROM sqlite_schema WHERE name = 'contacts'");
  if (const int result = tables.Run(); result != SQLITE_ROW) return StoreStatus(result);
  return tables.Integer(0) == 1 ? S_OK : kStoreDamaged;
}

}  // namespace

HRESULT SalvageStore(const std::filesystem::path& damaged, const std::filesystem::path& fresh,
                     Salvage& salvage, std::string& problem) {
  salvage = {};
  DatabasePtr from;
  DatabasePtr to;
  // Nobody else knows the new file, which is of no use until it is finished.
  constexpr char kFresh[] = "PRAGMA journal_mode = MEMORY; PRAGMA synchronous = FULL;";
  HRESULT status = Open(fresh, kFresh, to);
  if (Succeeded(status)) status = BringUpToDate(to.get(), true, 1, problem);
  if (Succeeded(status)) status = OpenDamaged(damaged, from);
  // An error of the disk looks the same, and may not come again.
  if (status == kStoreDamaged && problem.empty()) status = OpenDamaged(damaged, from);
  if (status == kStoreDamaged && problem.empty()) {
    from.reset();
    if (MendSchema(damaged, fresh)) status = OpenDamaged(damaged, from);
  }
  const auto execute = [&](const char* sql) {
    if (Succeeded(status))
      status = StoreStatus(sqlite3_exec(to.get(), sql, nullptr, nullptr, nullptr));
  };
  execute("BEGIN");
  if (Succeeded(status)) status = Salvager(from.get(), to.get(), salvage).Run();
  execute("COMMIT");
  if (Failed(status) && problem.empty()) problem = StoreStatusText(status);
  return status;
}

}  // namespace ce::host
