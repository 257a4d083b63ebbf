#include "handheld/store/store_check.h"

#include <cstdint>
#include <map>
#include <memory>
#include <utility>

#include "common/text/unicode.h"
#include "handheld/store/call_log.h"
#include "handheld/store/item_check.h"
#include "handheld/store/message_stores.h"
#include "handheld/store/store.h"
#include "handheld/store/store_error.h"
#include "handheld/store/store_schema.h"

namespace ce::host {
namespace {

constexpr std::size_t kMostProblems = 200;
// What has an identifier, each its own.
constexpr const char* kItemTables[] = {"appointments", "contacts", "tasks"};
constexpr char kCheckStep[] = "sqlite3_step:check";

std::string Sentence(const Handheld& handheld, const std::string& problem) {
  return handheld.storePath().string() + ": the store " + problem;
}

class Check {
 public:
  Check(const Handheld& handheld, Store& store)
      : store_(store),
        items_(ReadItemLimits(handheld), [this](std::string problem) { Add(std::move(problem)); }) {
  }

  std::vector<std::string> Run() {
    Integrity();
    // What the database itself calls damaged says nothing reliable about its content.
    if (!problems_.empty()) return problems_;
    Counter();
    for (const char* const& table : kItemTables) Identifiers(table);
    Items();
    LostExceptions();
    Ledger();
    Messages();
    Folders();
    Texts<StoredCall>("call", "calls", "id", kCallColumns);
    return problems_;
  }

 private:
  void Add(std::string problem) {
    if (problems_.size() < kMostProblems) problems_.push_back(std::move(problem));
  }

  // Calls `visit` with every row. `sql` lives until the store is closed.
  template <typename Visit>
  void ForEach(const std::string& sql, Visit&& visit) {
    sql_.push_back(std::make_unique<std::string>(sql));
    Statement statement;
    HRESULT status = store_.Prepare(sql_.back()->c_str(), statement);
    bool row = Succeeded(status);
    while (row) {
      status = statement.Step(kCheckStep, row);
      if (row) visit(statement);
    }
    if (Failed(status)) Add("the store " + StoreStatusText(status));
  }

  void Integrity() {
    ForEach("PRAGMA integrity_check", [&](const Statement& row) {
      if (row.Text(0) != "ok") Add(std::string(row.Text(0)));
    });
  }

  void Counter() {
    ForEach("SELECT count(*), min(next_oid) FROM oid_counter", [&](const Statement& row) {
      next_ = row.Integer(1);
      if (row.Integer(0) != 1 || next_ < 1 || next_ > kLastOid + 1) {
        Add("the identifier counter is damaged");
      }
    });
  }

  void Identifiers(const char* const& place) {
    const std::string table = place;
    const std::string next = std::to_string(next_);
    ForEach("SELECT oid FROM " + table + " WHERE oid < 1 OR oid >= " + next,
            [&](const Statement& row) {
              Add(table + " " + std::to_string(row.Integer(0)) +
                  ": the identifier was never given away");
            });
    for (const char* const& other : kItemTables) {
      if (&other <= &place) continue;
      ForEach("SELECT oid FROM " + table + " INTERSECT SELECT oid FROM " + other,
              [&](const Statement& row) {
                Add(table + " " + std::to_string(row.Integer(0)) +
                    ": the identifier is also one of " + other);
              });
    }
  }

  // Reads every item of a table, one after the other, and calls `visit` with each.
  template <typename Fields, typename Visit>
  void Items(const char* noun, Visit&& visit) {
    std::vector<std::uint32_t> oids;
    ForEach(
        std::string("SELECT oid FROM ") + ItemTable<Fields>::kName +
            " WHERE oid BETWEEN 1 AND 4294967295",
        [&](const Statement& row) { oids.push_back(static_cast<std::uint32_t>(row.Integer(0))); });
    for (const std::uint32_t oid : oids) {
      ItemRow<Fields> item;
      bool found = false;
      const HRESULT status = ReadItem(store_, oid, item, found);
      const std::string name = noun + (" " + std::to_string(oid));
      if (Failed(status)) {
        Add(name + ": " + StoreStatusText(status));
      } else if (found) {
        items_.Check(name, item);
        visit(name, oid, item);
      }
    }
  }

  void Items() {
    const auto noMore = [](const std::string&, std::uint32_t, const auto&) {};
    Items<ContactFields>("contact", noMore);
    Items<AppointmentFields>("appointment", [&](const std::string& name, std::uint32_t oid,
                                                const AppointmentRow& appointment) {
      ExceptionsOf(name, oid, appointment);
    });
    Items<TaskFields>("task", noMore);
  }

  void ExceptionsOf(const std::string& name, std::uint32_t oid, const AppointmentRow& appointment) {
    std::vector<ExceptionRow> rows;
    std::chrono::seconds timeOfDay{};
    const HRESULT status = ReadExceptions(store_, oid, rows, timeOfDay);
    if (Failed(status)) Add(name + ", exceptions: " + StoreStatusText(status));
    for (const ExceptionRow& row : rows) items_.Check(name, appointment, row);
  }

  // What the walk through the appointments does not meet.
  void LostExceptions() {
    ForEach("SELECT oid FROM exceptions WHERE oid NOT IN (SELECT oid FROM appointments)",
            [&](const Statement& row) {
              Add("exception of appointment " + std::to_string(row.Integer(0)) +
                  ": there is no such appointment");
            });
    ForEach("SELECT oid, OriginalDay FROM exceptions WHERE OriginalDay NOT BETWEEN " +
                std::to_string(DayNumber(kFirstItemDay)) + " AND " +
                std::to_string(DayNumber(kLastItemDay)),
            [&](const Statement& row) {
              Add("appointment " + std::to_string(row.Integer(0)) + ", exception of day " +
                  std::to_string(row.Integer(1)) + ": it is not a possible date");
            });
  }

  void Ledger() {
    ForEach(
        "SELECT oid, identity FROM import_ledger WHERE oid < 1 OR oid >= " + std::to_string(next_),
        [&](const Statement& row) {
          Add("import ledger: " + std::string(row.Text(1)) + " names the identifier " +
              std::to_string(row.Integer(0)) + ", which was never given away");
        });
  }

  void Messages() {
    ForEach("PRAGMA foreign_key_check", [&](const Statement& row) {
      if (row.Text(0).substr(0, 7) != "message") return;
      Add(std::string(row.Text(0)) + " " + std::to_string(row.Integer(1)) +
          ": it lies in none of " + std::string(row.Text(2)));
    });
    for (const char* table : {"message_stores", "message_folders", "messages"}) {
      ForEach(std::string("SELECT id FROM ") + table +
                  " WHERE id < 1 OR id >= (SELECT next_id FROM message_id_counter)",
              [&](const Statement& row) {
                Add(table + (" " + std::to_string(row.Integer(0))) +
                    ": the identifier was never given away");
              });
    }
    Texts<StoredMessage>("message", "messages", "id", kMessageColumns);
    Texts<StoredRecipient>("recipient of message", "message_recipients", "message",
                           kRecipientColumns);
  }

  // The texts of all rows of a table, which lines name by the column `id`.
  template <typename Row>
  void Texts(const std::string& noun, const char* table, const char* id,
             std::span<const Column<Row>> columns) {
    ColumnNames names = {id};
    for (const Column<Row>& column : columns) {
      if (std::holds_alternative<std::optional<std::u16string> Row::*>(column.member)) {
        names.push_back(column.name);
      }
    }
    ForEach("SELECT " + ColumnList(ColumnForm::kNames, names, 1) + " FROM " + table,
            [&](const Statement& row) {
              for (std::size_t i = 1; i < names.size(); ++i) {
                if (text::IsWtf8(row.Text(static_cast<int>(i)))) continue;
                Add(noun + " " + std::to_string(row.Integer(0)) + ": " + names[i] + " is not text");
              }
            });
  }

  // Names one folder of each circle, and each that is the first too deep on its way from the top.
  void Folders() {
    std::map<std::int64_t, std::int64_t> parents;  // 0 for none
    ForEach("SELECT id, parent FROM message_folders",
            [&](const Statement& row) { parents[row.Integer(0)] = row.Integer(1); });
    constexpr int kOnTheWay = -1;
    constexpr int kInACircle = -2;  // or below one
    std::map<std::int64_t, int> depths;
    for (const auto& [first, ignored] : parents) {
      std::vector<std::int64_t> way;
      std::int64_t folder = first;
      for (; folder != 0 && depths.try_emplace(folder, kOnTheWay).second; folder = parents[folder])
        way.push_back(folder);
      int depth = folder == 0 ? -1 : depths[folder];
      const bool inACircle = folder != 0 && depth < 0;
      if (inACircle && depth == kOnTheWay) {
        Add("message folder " + std::to_string(folder) + ": it lies below itself");
      }
      for (; !way.empty(); way.pop_back()) {
        depths[way.back()] = inACircle ? kInACircle : ++depth;
        if (!inACircle && depth == kDeepestFolder + 1) {
          Add("message folder " + std::to_string(way.back()) + ": it lies more than " +
              std::to_string(kDeepestFolder) + " folders below the top");
        }
      }
    }
  }

  Store& store_;
  const ItemCheck items_;
  std::int64_t next_ = 1;
  std::vector<std::unique_ptr<std::string>> sql_;
  std::vector<std::string> problems_;
};

}  // namespace

std::vector<std::string> CheckStore(const Handheld& handheld) {
  if (!Store::Exists(handheld.storePath()) && handheld.Number(kStoreCreated, 0) == 0) return {};
  return CheckStore(handheld, handheld.storePath());
}

std::vector<std::string> CheckStore(const Handheld& handheld, const std::filesystem::path& path) {
  std::unique_ptr<Store> store;
  std::string problem;
  if (Failed(Store::OpenExisting(handheld, path, store, problem)))
    return {Sentence(handheld, problem)};
  if (const HRESULT status = store->BeginSnapshot(); Failed(status))
    return {Sentence(handheld, StoreStatusText(status))};
  return Check(handheld, *store).Run();
}

std::string DescribeStoreProblem(Handheld& handheld) {
  std::unique_ptr<Store> store;
  std::string problem;
  if (Succeeded(Store::Open(handheld, store, problem))) return {};
  return Sentence(handheld, problem);
}

}  // namespace ce::host
