#include "handheld/salvage/store_salvage.h"

#include <algorithm>
#include <map>
#include <optional>
#include <set>

#include "handheld/salvage/damaged_store.h"
#include "handheld/salvage/fresh_store.h"
#include "handheld/store/store_error.h"
#include "handheld/store/store_schema.h"
#include "platform/status.h"

namespace ce::host {
namespace {

constexpr std::size_t kMostLost = 200;

// What gives identifiers away.
struct Counter {
  const char* table;
  const char* noun;
  const char* lastUsed;   // by what is saved
  const char* lastNamed;  // by anything: what is lost may have hung on it, or been imported
  const char* raise;      // ?1 is the last one given
  int ahead;              // of the last one given, what stands in the table
};
constexpr Counter kOids = {
    "oid_counter",
    "contact, appointment and task",
    "SELECT max(oid) FROM (SELECT max(oid) AS oid FROM contacts UNION ALL "
    "SELECT max(oid) FROM appointments UNION ALL SELECT max(oid) FROM tasks)",
    "SELECT max(oid) FROM (SELECT max(oid) AS oid FROM exceptions UNION ALL "
    "SELECT max(oid) FROM import_ledger) WHERE oid <= 4294967295",
    "UPDATE oid_counter SET next_oid = min(?1, 4294967295) + 1",
    1};
constexpr Counter kMessageIds = {
    "message_id_counter",
    "message and message folder",
    "SELECT max(id) FROM (SELECT max(id) AS id FROM message_stores UNION ALL "
    "SELECT max(id) FROM message_folders UNION ALL SELECT max(id) FROM messages)",
    "SELECT max(message) FROM message_recipients WHERE message <= 4294967295",
    "UPDATE message_id_counter SET next_id = max(next_id, ?1 + 1)",
    1};
constexpr Counter kCallIds = {
    "sqlite_sequence",
    "call",
    "SELECT max(id) FROM calls",
    "SELECT 0",
    "INSERT OR REPLACE INTO sqlite_sequence (rowid, name, seq) VALUES (1, 'calls', ?1)",
    0};
constexpr const Counter* kCounters[] = {&kOids, &kMessageIds, &kCallIds};

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

class Salvager {
 public:
  Salvager(DamagedStore& damaged, FreshStore& fresh, Salvage& salvage)
      : damaged_(damaged), fresh_(fresh), salvage_(salvage) {}

  // S_OK also when rows are lost.
  HRESULT Run() {
    if (!damaged_.isLogWhole()) Lose("what was written last: its log cannot be read");
    for (const NumberedTable& table : kNumberedTables) RETURN_IF_FAILED(SaveNumbered(table));
    RETURN_IF_FAILED(SaveOthers("message_recipients",
                                "message_recipients: damaged; some that cannot be named may be "
                                "lost"));
    RETURN_IF_FAILED(SaveOthers("import_ledger",
                                "what was imported cannot be told for all items: imported once "
                                "more, some may stand twice"));
    for (const Counter* counter : kCounters) RETURN_IF_FAILED(ReadCounter(*counter));
    for (const Lost& lost : lost_) TellLost(lost);
    for (const Counter* counter : kCounters) RETURN_IF_FAILED(Raise(*counter));
    RETURN_IF_FAILED(MendReferences());
    if (unnamed_ > 0) salvage_.lost.push_back("and " + std::to_string(unnamed_) + " more");
    return S_OK;
  }

 private:
  struct Given {
    std::set<std::int64_t> saved;
    std::int64_t lastLost = 0;
    std::optional<std::int64_t> last;  // by the damaged store's own account
  };
  // What is missing of a table.
  struct Lost {
    const NumberedTable* table;
    std::vector<Numbers> gaps;
    bool hasOrder;  // so that the gaps are all
  };

  void Lose(std::string what) {
    if (salvage_.lost.size() < kMostLost)
      salvage_.lost.push_back(std::move(what));
    else
      ++unnamed_;
  }

  HRESULT SaveNumbered(const NumberedTable& table) {
    const std::string name = table.name;
    TableRows rows;
    RETURN_IF_FAILED(damaged_.FindRows(name, rows));
    if (table.hasRowsFromTheStart) RETURN_IF_FAILED(fresh_.SetAside(name));
    std::set<std::int64_t>& numbers = given_[table.counter].saved;
    std::uint64_t saved = 0;
    for (const auto& [number, place] : rows.numbered) {
      bool isSaved = false;
      RETURN_IF_FAILED(Save(name, place, number, isSaved));
      // No other table has it now, and this line is enough to tell.
      numbers.insert(number);
      if (isSaved)
        ++saved;
      else
        Lose(std::string(table.noun) + ' ' + std::to_string(number) + ": cannot be read");
    }
    if (saved > 0) salvage_.saved.emplace_back(name, saved);
    if (!rows.isWhole)
      lost_.push_back({&table, std::move(rows.gaps), rows.root != 0 && !rows.hasUnnumbered});
    return rows.isWhole || !table.hasRowsFromTheStart ? S_OK : fresh_.GiveBack(name);
  }

  HRESULT SaveOthers(const std::string& table, const char* loss) {
    TableRows rows;
    RETURN_IF_FAILED(damaged_.FindRows(table, rows));
    bool isWhole = rows.isWhole;
    for (const RowPlace& place : rows.others) {
      bool isSaved = false;
      RETURN_IF_FAILED(Save(table, place, 0, isSaved));
      isWhole = isWhole && isSaved;
    }
    if (!isWhole) Lose(loss);
    return S_OK;
  }

  HRESULT Save(const std::string& table, const RowPlace& place, std::int64_t number,
               bool& isSaved) {
    std::vector<RecordValue> values;
    RETURN_IF_FAILED(damaged_.ReadRow(place, values, isSaved));
    return isSaved ? fresh_.Insert(damaged_.ShapeOf(table), values, number, isSaved) : S_OK;
  }

  HRESULT ReadCounter(const Counter& counter) {
    Given& given = given_[&counter];
    RETURN_IF_FAILED(damaged_.ReadCounter(counter.table, given.last));
    // The calls' counter comes with the first call.
    if (&counter == &kCallIds && given.last == 0 && !given.saved.empty()) given.last.reset();
    if (given.last) {
      given.last = *given.last - counter.ahead;
    } else {
      Lose(std::string("which ") + counter.noun +
           " was the last: cannot be read; the number of a lost one may be given away again");
    }
    return S_OK;
  }

  // Gaps are told without the numbers of what has been found elsewhere.
  void TellLost(const Lost& lost) {
    Given& given = given_[lost.table->counter];
    std::vector<Numbers> gaps = lost.gaps;
    std::sort(gaps.begin(), gaps.end());
    std::int64_t next = 1;
    for (const auto& [first, last] : gaps) {
      next = std::max(next, first);
      for (auto it = given.saved.lower_bound(next); it != given.saved.end() && *it <= last; ++it) {
        TellGap(*lost.table, {next, *it - 1});
        next = *it + 1;
      }
      TellGap(*lost.table, {next, last});
      next = std::max(next, last + 1);
    }
    if (!lost.hasOrder)
      Lose(lost.table->name + std::string(": damaged; some that cannot be named may be lost"));
  }

  void TellGap(const NumberedTable& table, Numbers gap) {
    auto [first, last] = gap;
    Given& given = given_[table.counter];
    const bool isOpen = last == kLastOid;
    if (isOpen && given.last) last = *given.last;
    if (first > last) return;
    std::string name = std::string(table.noun) + ' ' + std::to_string(first);
    if (isOpen && !given.last)
      name += " and all behind it";
    else if (first != last)
      name += " to " + std::to_string(last);
    Lose(name + ": cannot be read, as far as there were any");
    if (!isOpen) given.lastLost = std::max(given.lastLost, last);
  }

  // No identifier that is known is given away twice, one of what is lost as little as another.
  HRESULT Raise(const Counter& counter) {
    const Given& given = given_[&counter];
    std::int64_t last = given.last.value_or(given.lastLost);
    for (const char* sql : {counter.lastUsed, given.last ? nullptr : counter.lastNamed}) {
      std::vector<std::int64_t> numbers;
      if (sql) RETURN_IF_FAILED(fresh_.ReadNumbers(sql, numbers));
      for (const std::int64_t number : numbers) last = std::max(last, number);
    }
    return fresh_.Execute(counter.raise, last);
  }

  // Names the rows that `from` gives, by their column `id`, then runs `mend` on them.
  HRESULT Mend(const char* id, const std::string& noun, const char* fate, const std::string& mend,
               const std::string& from) {
    std::vector<std::int64_t> numbers;
    RETURN_IF_FAILED(
        fresh_.ReadNumbers(std::string("SELECT DISTINCT ") + id + " FROM " + from, numbers));
    for (const std::int64_t number : numbers)
      Lose(noun + ' ' + std::to_string(number) + ": " + fate);
    return numbers.empty() ? S_OK : fresh_.Execute(mend);
  }

  HRESULT MendReferences() {
    const std::string lost = "exceptions WHERE oid NOT IN (SELECT oid FROM appointments)";
    RETURN_IF_FAILED(
        Mend("oid", "appointment", "its exceptions are lost with it", "DELETE FROM " + lost, lost));
    const std::string alone = "message_recipients WHERE message NOT IN (SELECT id FROM messages)";
    RETURN_IF_FAILED(Mend("message", "message", "its recipients are lost with it",
                          "DELETE FROM " + alone, alone));
    return MendPlaces();
  }

  HRESULT MendPlaces() {
    // Folders that a top leads to, and the store of that.
    const std::string below =
        "WITH RECURSIVE below (id, store) AS (SELECT id, store FROM message_folders "
        "WHERE parent IS NULL AND store IN (SELECT id FROM message_stores) UNION "
        "SELECT f.id, below.store FROM message_folders f JOIN below ON f.parent = below.id) ";
    const std::string alone = " WHERE id NOT IN (SELECT id FROM below)";
    const std::string homeless = " WHERE folder NOT IN (SELECT id FROM message_folders)";
    std::vector<std::int64_t> found;
    RETURN_IF_FAILED(fresh_.ReadNumbers(below + "SELECT id FROM message_folders" + alone +
                                            " UNION ALL SELECT id FROM messages" + homeless,
                                        found));
    if (found.empty()) return S_OK;
    for (const char* table : {"message_stores", "message_folders"})
      RETURN_IF_FAILED(fresh_.GiveBack(table));
    const std::string lost =
        " WHERE (parent IS NOT NULL AND parent NOT IN (SELECT id FROM message_folders)) "
        "OR (parent IS NULL AND store NOT IN (SELECT id FROM message_stores) AND id <> 2)";
    const char* const lies = "what it lay in is lost; it lies in the telephone's now";
    const std::string move = "UPDATE message_folders SET store = 1, parent = 2";
    RETURN_IF_FAILED(Mend("id", "message folder", lies, move + lost, "message_folders" + lost));
    // What lies below itself.
    RETURN_IF_FAILED(Mend("id", "message folder", lies, below + move + alone,
                          "(" + below + "SELECT id FROM message_folders" + alone + ")"));
    RETURN_IF_FAILED(
        fresh_.Execute(below +
                       "UPDATE message_folders SET store = (SELECT store FROM below WHERE id = "
                       "message_folders.id) WHERE id IN (SELECT id FROM below)"));
    return Mend("id", "message", "its folder is lost; it lies in the telephone's inbox now",
                "UPDATE messages SET folder = (SELECT id FROM message_folders "
                "ORDER BY id <> 3, id LIMIT 1)" +
                    homeless,
                "messages" + homeless);
  }

  DamagedStore& damaged_;
  FreshStore& fresh_;
  Salvage& salvage_;
  std::map<const Counter*, Given> given_;
  std::vector<Lost> lost_;
  std::uint64_t unnamed_ = 0;  // losses beyond those that are named
};

}  // namespace

HRESULT SalvageStore(const std::filesystem::path& damaged, const std::filesystem::path& fresh,
                     Salvage& salvage, std::string& problem) {
  salvage = {};
  FreshStore to;
  DamagedStore from;
  std::vector<TableShape> shapes;
  std::set<std::string> schema;
  HRESULT status = to.Make(fresh, problem);
  if (Succeeded(status)) status = to.ReadShapes(shapes);
  if (Succeeded(status)) status = to.ReadSchema(schema);
  if (Succeeded(status)) status = from.Open(damaged, std::move(shapes), schema, problem);
  if (Succeeded(status)) status = Salvager(from, to, salvage).Run();
  if (Succeeded(status)) status = to.Finish();
  if (Failed(status) && problem.empty()) problem = StoreStatusText(status);
  return status;
}

}  // namespace ce::host
