#include "handheld/salvage/store_salvage.h"

#include <gmock/gmock.h>
#include <sqlite3.h>

#include <cstring>
#include <functional>
#include <map>
#include <utility>
#include <vector>

#include "handheld/store/store_error.h"
#include "tests/handheld/outlook/calendar_support.h"
#include "tests/support/sanitizers.h"
#include "tests/support/store_sql.h"

namespace ce::host::testing {
namespace {

namespace fs = std::filesystem;
using corvane::testing::kSanitizer;
using corvane::testing::TemporaryDirectory;
using ::testing::Contains;
using ::testing::ElementsAre;
using ::testing::IsEmpty;

constexpr std::size_t kPage = 4096;

// The database's allocations: which of the next ones is refused, 0 for none.
int g_refused = 0;
sqlite3_mem_methods g_real;
bool IsRefused() {
  return g_refused > 0 && --g_refused == 0;
}
void* Allocate(int size) {
  return IsRefused() ? nullptr : g_real.xMalloc(size);
}
void* Reallocate(void* block, int size) {
  return IsRefused() ? nullptr : g_real.xRealloc(block, size);
}

// The readings of a database's file, and which of them the disk refuses once.
const char* g_unreadable = "none";  // the end of the file's name
int g_readings = 0;
int g_refusedReading = 1;
int g_refusal = SQLITE_OK;
sqlite3_vfs* g_realDisk = nullptr;
std::map<sqlite3_file*, std::string> g_files;
sqlite3_io_methods g_methods;
int (*g_realRead)(sqlite3_file*, void*, int, sqlite3_int64);
int ReadFile(sqlite3_file* file, void* bytes, int size, sqlite3_int64 place) {
  const int result = g_realRead(file, bytes, size, place);
  if (!g_files[file].ends_with(g_unreadable) || ++g_readings != g_refusedReading) return result;
  std::memset(bytes, 0, static_cast<std::size_t>(size));
  return g_refusal;
}
int OpenFile(sqlite3_vfs*, const char* name, sqlite3_file* file, int flags, int* flagsGiven) {
  const int result = g_realDisk->xOpen(g_realDisk, name, file, flags, flagsGiven);
  if (result != SQLITE_OK || (flags & SQLITE_OPEN_MAIN_DB) == 0) return result;
  g_files[file] = name;
  g_methods = *file->pMethods;
  g_realRead = g_methods.xRead;
  g_methods.xRead = ReadFile;
  file->pMethods = &g_methods;
  return result;
}

struct Outcome {
  HRESULT status = S_OK;
  Salvage salvage;
};

class StoreSalvage : public HandheldTest {
 protected:
  void MakeDamaged(int contacts, const std::string& body) {
    AddContacts(LoggedOn(), contacts);
    ASSERT_TRUE(RunSql(*handheld_, "UPDATE contacts SET body = body || " + body));
    // The tables lie elsewhere in it than in a store that was made in the latest format.
    ASSERT_TRUE(RunSql(*handheld_, "VACUUM INTO '" + std::string(directory_ / "damaged.db") + "'"));
  }

  Outcome SalvageAnew() const {
    fs::remove(directory_ / "fresh.db");
    fs::copy_file(directory_ / "damaged.db", directory_ / "copy.db",
                  fs::copy_options::overwrite_existing);
    Outcome outcome;
    std::string problem;
    outcome.status =
        SalvageStore(directory_ / "copy.db", directory_ / "fresh.db", outcome.salvage, problem);
    return outcome;
  }

  // Of runs in which something is refused once each fails or saves all. The number of those that
  // failed; `runRefusing` says whether it came to the refusal.
  int FailedOfThoseThatRefuse(int step, const std::function<bool(int, Outcome&)>& runRefusing) {
    const Outcome whole = SalvageAnew();
    EXPECT_EQ(whole.status, S_OK);
    EXPECT_EQ(whole.salvage.saved.front(), std::pair(std::string("contacts"), std::uint64_t{3}));
    const std::string fresh = directory_.Read("fresh.db");
    int failed = 0;
    for (int refused = 1;; refused += step) {
      SCOPED_TRACE(refused);
      Outcome outcome;
      const bool wasRefused = runRefusing(refused, outcome);
      if (Failed(outcome.status)) {
        ++failed;
      } else {
        EXPECT_EQ(outcome.salvage.saved, whole.salvage.saved);
        EXPECT_EQ(outcome.salvage.lost, whole.salvage.lost);
        EXPECT_TRUE(directory_.Read("fresh.db") == fresh);
      }
      if (!wasRefused || HasFailure()) return failed;
    }
  }

  const TemporaryDirectory directory_;
};

class SalvageWithoutMemory : public StoreSalvage {
 protected:
  void SetUp() override {
    // So long that a text has pages of its own.
    MakeDamaged(3, "hex(zeroblob(5000))");
    UseAllocator(Allocate, Reallocate);
  }
  void TearDown() override {
    UseAllocator(g_real.xMalloc, g_real.xRealloc);
    HandheldTest::TearDown();
  }
  static void UseAllocator(void* (*allocate)(int), void* (*reallocate)(void*, int)) {
    ASSERT_EQ(sqlite3_shutdown(), SQLITE_OK);
    if (g_real.xMalloc == nullptr) {
      ASSERT_EQ(sqlite3_config(SQLITE_CONFIG_GETMALLOC, &g_real), SQLITE_OK);
    }
    sqlite3_mem_methods methods = g_real;
    methods.xMalloc = allocate;
    methods.xRealloc = reallocate;
    ASSERT_EQ(sqlite3_config(SQLITE_CONFIG_MALLOC, &methods), SQLITE_OK);
    ASSERT_EQ(sqlite3_initialize(), SQLITE_OK);
  }
};

TEST_F(SalvageWithoutMemory, FailsOrSavesAll) {
  const int failed =
      FailedOfThoseThatRefuse(kSanitizer ? 35 : 7, [this](int refused, Outcome& outcome) {
        g_refused = refused;
        outcome = SalvageAnew();
        return std::exchange(g_refused, 0) == 0;
      });
  EXPECT_GT(failed, 20);
}

class SalvageOnABadDisk : public StoreSalvage {
 protected:
  void SetUp() override {
    g_realDisk = sqlite3_vfs_find(nullptr);
    disk_ = *g_realDisk;
    disk_.zName = "bad disk";
    disk_.xOpen = OpenFile;
    ASSERT_EQ(sqlite3_vfs_register(&disk_, 1), SQLITE_OK);
  }
  void TearDown() override {
    sqlite3_vfs_unregister(&disk_);
    sqlite3_vfs_register(g_realDisk, 1);
    g_files.clear();
    HandheldTest::TearDown();
  }
  int FailedOfReadings(const char* file, int refusal) {
    g_refusal = refusal;
    return FailedOfThoseThatRefuse(1, [&](int refused, Outcome& outcome) {
      g_unreadable = file;
      g_readings = 0;
      g_refusedReading = refused;
      outcome = SalvageAnew();
      g_unreadable = "none";
      return std::exchange(g_readings, 0) >= refused;
    });
  }

  sqlite3_vfs disk_;
};

// What cannot be read there is not lost: the damaged one still has it.
TEST_F(SalvageOnABadDisk, FailsWhenTheNewStoreCannotBeRead) {
  LoggedOn();
  ASSERT_TRUE(RunSql(*handheld_,
                     "INSERT INTO messages (id, folder) VALUES (8, 3), (9, 3);"
                     "INSERT INTO message_recipients VALUES (8, 0, 'Ann', '1'), (9, 0, 'Ben', '2');"
                     // So long that what came before it is no longer kept in memory.
                     "INSERT INTO calls VALUES (1, 1, 1, 0, 0, 0, '', '', '', "
                     "hex(zeroblob(2000000)))"));
  MakeDamaged(3, "''");
  EXPECT_GT(FailedOfReadings("fresh.db", SQLITE_IOERR_SHORT_READ), 5);
}

// A tree one page of which leads to others than it should.
class SalvageOfAWrongTree : public StoreSalvage {
 protected:
  void SetUp() override {
    LoggedOn();
    const std::string numbers =
        "WITH n (i) AS (VALUES (1) UNION ALL SELECT i + 1 FROM n LIMIT 20) ";
    ASSERT_TRUE(RunSql(
        *handheld_,
        "INSERT INTO messages (id, folder) VALUES (8, 3);" + numbers +
            "INSERT INTO messages (id, folder, subject) "
            "SELECT i + 8, 3, hex(zeroblob(450)) FROM n;" +
            numbers + "INSERT INTO message_recipients SELECT 8, i, hex(zeroblob(450)), '' FROM n;" +
            numbers + "INSERT INTO import_ledger SELECT 0, i, i, hex(zeroblob(450)) FROM n;"));
    MakeDamaged(12, "hex(zeroblob(900))");
    whole_ = directory_.Read("damaged.db");
    directory_.Write("whole.db", whole_);
    UsePointersOf("contacts");
  }

  void UsePointersOf(const std::string& table) {
    const std::string query = "SELECT rootpage FROM sqlite_schema WHERE name = '" + table + "'";
    root_ = (std::stoul(Answer("damaged.db", query.c_str())) - 1) * kPage;
    ASSERT_TRUE(whole_.at(root_) == 5 || whole_.at(root_) == 2) << "does not lead to others";
    pointers_ = {root_ + 8};
    for (int cell = 0; cell < whole_.at(root_ + 4); ++cell) {
      const std::size_t at = root_ + 12 + 2 * static_cast<std::size_t>(cell);
      pointers_.push_back(root_ + static_cast<unsigned char>(whole_.at(at)) * 256u +
                          static_cast<unsigned char>(whole_.at(at + 1)));
    }
    ASSERT_GT(pointers_.size(), 3u) << table;
  }

  std::string Answer(const char* file, const char* sql) const {
    sqlite3* database = nullptr;
    std::string answer;
    EXPECT_EQ(sqlite3_open((directory_ / file).c_str(), &database), SQLITE_OK);
    const auto add = [](void* to, int, char** values, char**) {
      *static_cast<std::string*>(to) += *values;
      return 0;
    };
    EXPECT_EQ(sqlite3_exec(database, sql, add, &answer, nullptr), SQLITE_OK);
    sqlite3_close(database);
    return answer;
  }
  // What is saved when one page has these pointers.
  Outcome SalvageWith(const std::vector<std::pair<std::size_t, std::size_t>>& pointers) {
    std::string bytes = whole_;
    for (const auto& [to, from] : pointers)
      bytes.replace(pointers_.at(to), 4, whole_, pointers_.at(from), 4);
    directory_.Write("damaged.db", bytes);
    Outcome outcome = SalvageAnew();
    EXPECT_EQ(outcome.status, S_OK);
    return outcome;
  }
  static void Flip(std::string& bytes, std::size_t place, std::size_t bit) {
    bytes[place + bit / 8] = static_cast<char>(bytes[place + bit / 8] ^ 1 << bit % 8);
  }
  std::size_t Pointer(std::size_t which) const {
    std::size_t page = 0;
    for (const char byte : whole_.substr(pointers_.at(which), 4))
      page = page << 8 | static_cast<unsigned char>(byte);
    return page;
  }
  bool RunSqlOn(const char* file, const char* sql) const {
    sqlite3* database = nullptr;
    EXPECT_EQ(sqlite3_open((directory_ / file).c_str(), &database), SQLITE_OK);
    const int result = sqlite3_exec(database, sql, nullptr, nullptr, nullptr);
    EXPECT_EQ(result, SQLITE_OK) << sqlite3_errmsg(database);
    sqlite3_close(database);
    return result == SQLITE_OK;
  }
  std::string Contacts(const char* file) const {
    return Answer(file,
                  "SELECT oid || ' ' || Body || LastName || coalesce(FileAs, '') || '|' "
                  "FROM contacts");
  }
  void ExpectAllSaved(const Outcome& outcome) const {
    EXPECT_EQ(outcome.status, S_OK);
    EXPECT_THAT(outcome.salvage.lost, IsEmpty());
    EXPECT_EQ(Contacts("fresh.db"), Contacts("whole.db"));
  }

  std::size_t root_ = 0;               // the place of the page in the file
  std::vector<std::size_t> pointers_;  // of its pointers, the one to the last page first
  std::string whole_;
};

// A page that nothing leads to is found by what its rows look like.
TEST_F(SalvageOfAWrongTree, SavesAllWhereverItsPointersLead) {
  for (std::size_t to = 0; to < pointers_.size(); ++to) {
    for (std::size_t from = 0; from < pointers_.size(); ++from) {
      if (to == from) continue;
      SCOPED_TRACE(std::to_string(to) + " is " + std::to_string(from));
      ExpectAllSaved(SalvageWith({{to, from}}));
      ExpectAllSaved(SalvageWith({{to, from}, {from, to}}));
    }
  }
}

TEST_F(SalvageOfAWrongTree, TellsThatRecipientsOrTheMemoryOfImportsIsNotWhole) {
  for (const char* table : {"message_recipients", "import_ledger"}) {
    UsePointersOf(table);
    for (std::size_t to = 0; to < pointers_.size(); ++to) {
      for (std::size_t from = 0; from < pointers_.size(); ++from) {
        SCOPED_TRACE(std::string(table) + ": " + std::to_string(to) + " is " +
                     std::to_string(from));
        EXPECT_EQ(SalvageWith({{to, from}}).salvage.lost.empty(), to == from);
      }
    }
    directory_.Write("damaged.db", whole_);
  }
}

TEST_F(SalvageOfAWrongTree, DoesNotGoRoundForEver) {
  for (const char* table : {"contacts", "messages", "message_recipients", "import_ledger"}) {
    UsePointersOf(table);
    const std::string count = std::string("SELECT count(*) FROM ") + table;
    const std::string all = Answer("damaged.db", count.c_str());
    std::string round = whole_;
    const std::size_t page = root_ / kPage + 1;
    for (const std::size_t pointer : pointers_) {
      SCOPED_TRACE(table);
      const std::string self{0, 0, 0, static_cast<char>(page)};
      std::string bytes = whole_;
      for (std::string* damaged : {&bytes, &round}) {
        damaged->replace(pointer, 4, self);
        directory_.Write("damaged.db", *damaged);
        EXPECT_EQ(SalvageAnew().status, S_OK);
        EXPECT_EQ(Answer("fresh.db", count.c_str()), all);
      }
    }
    directory_.Write("damaged.db", whole_);
  }
}

TEST_F(SalvageOfAWrongTree, SavesAllWhicheverBitOfAnUpperPageHasChanged) {
  constexpr std::size_t kHead = 12;
  for (std::size_t bit = 0; bit < 8 * (kHead + 2 * (pointers_.size() - 1)); ++bit) {
    SCOPED_TRACE(bit);
    std::string bytes = whole_;
    Flip(bytes, root_, bit);
    directory_.Write("damaged.db", bytes);
    const Outcome outcome = SalvageAnew();
    EXPECT_EQ(outcome.status, S_OK);
    EXPECT_EQ(Contacts("fresh.db"), Contacts("whole.db"));
  }
}

TEST_F(SalvageOfAWrongTree, TellsOfALossWhicheverBitOfAPageOfRowsHasChanged) {
  constexpr std::size_t kHead = 8;
  for (const std::string table : {"contacts", "messages"}) {
    UsePointersOf(table);
    const std::size_t place = (Pointer(1) - 1) * kPage;
    const std::size_t rows = static_cast<unsigned char>(whole_[place + 4]);
    const std::string count = "SELECT count(*) FROM " + table;
    const int all = std::stoi(Answer("damaged.db", count.c_str()));
    int losses = 0;
    for (std::size_t bit = 0; bit < 8 * (kHead + 2 * rows); ++bit) {
      SCOPED_TRACE(table + " " + std::to_string(bit));
      std::string bytes = whole_;
      Flip(bytes, place, bit);
      directory_.Write("damaged.db", bytes);
      const Outcome outcome = SalvageAnew();
      ASSERT_EQ(outcome.status, S_OK);
      const int saved = std::stoi(Answer("fresh.db", count.c_str()));
      EXPECT_GE(saved, all - static_cast<int>(rows));
      if (saved == all) continue;
      ++losses;
      EXPECT_FALSE(outcome.salvage.lost.empty());
    }
    EXPECT_GT(losses, 0);
    directory_.Write("damaged.db", whole_);
  }
}

// Tables of a store that was brought up to date lie elsewhere than in a new one, as these do.
TEST_F(SalvageOfAWrongTree, NeedsNoSchema) {
  for (const std::size_t size : {std::size_t{100}, kPage}) {
    std::string bytes = whole_;
    bytes.replace(0, size, size, '\0');
    directory_.Write("damaged.db", bytes);
    ExpectAllSaved(SalvageAnew());
    EXPECT_EQ(Answer("fresh.db", "SELECT count(*) FROM message_recipients"), "20");
    EXPECT_EQ(Answer("fresh.db", "SELECT next_oid FROM oid_counter"),
              Answer("whole.db",
                     "SELECT max((SELECT next_oid FROM oid_counter), "
                     "(SELECT next_id FROM message_id_counter))"));
  }
}

TEST_F(SalvageOfAWrongTree, SavesRowsWhoseTableIsSaidToLieElsewhere) {
  ASSERT_TRUE(RunSqlOn("damaged.db",
                       "PRAGMA writable_schema = ON; UPDATE sqlite_schema SET rootpage = 3 "
                       "WHERE type = 'table' AND name NOT LIKE '%_counter' AND rootpage <> 3"));
  const Outcome outcome = SalvageAnew();
  EXPECT_EQ(outcome.status, S_OK);
  EXPECT_EQ(Contacts("fresh.db"), Contacts("whole.db"));
  EXPECT_EQ(Answer("fresh.db", "SELECT count(*) FROM messages"), "21");
}

TEST_F(SalvageOfAWrongTree, SavesOneOfTwoThatClaimOneEntryIdentifier) {
  ASSERT_TRUE(RunSqlOn("damaged.db",
                       "UPDATE messages SET entry_id = x'01' WHERE id = 9;"
                       "PRAGMA writable_schema = ON; UPDATE sqlite_schema SET "
                       "sql = replace(sql, 'BLOB UNIQUE', 'BLOB       ') WHERE name = 'messages';"
                       "DELETE FROM sqlite_schema WHERE name = 'sqlite_autoindex_messages_1'"));
  ASSERT_TRUE(RunSqlOn("damaged.db", "UPDATE messages SET entry_id = x'01' WHERE id = 12"));
  const Outcome outcome = SalvageAnew();
  EXPECT_EQ(Answer("fresh.db", "SELECT id FROM messages WHERE entry_id = x'01'"), "9");
  EXPECT_THAT(outcome.salvage.lost, Contains("message 12: cannot be read"));
}

TEST_F(SalvageOfAWrongTree, LeavesAnotherProgramsDatabaseAndANewerStoreAlone) {
  for (const char* identity : {"PRAGMA application_id = 7", "PRAGMA user_version = 9"}) {
    SCOPED_TRACE(identity);
    directory_.Write("damaged.db", whole_);
    ASSERT_TRUE(RunSqlOn("damaged.db", identity));
    ExpectAllSaved(SalvageAnew());  // a changed bit
    ASSERT_TRUE(RunSqlOn("damaged.db", "CREATE TABLE theirs (a)"));
    EXPECT_TRUE(Failed(SalvageAnew().status));
  }
}

TEST_F(SalvageOfAWrongTree, TellsThatACounterIsLostAndGoesByAllThatNamesANumber) {
  ASSERT_TRUE(RunSqlOn("damaged.db", "INSERT INTO import_ledger VALUES (0, 'gone', 70, '')"));
  const std::string root =
      Answer("damaged.db", "SELECT rootpage FROM sqlite_schema WHERE name = 'oid_counter'");
  std::string bytes = directory_.Read("damaged.db");
  bytes.replace((std::stoul(root) - 1) * kPage, kPage, kPage, 'x');
  directory_.Write("damaged.db", bytes);
  const Outcome outcome = SalvageAnew();
  EXPECT_THAT(outcome.salvage.lost,
              ElementsAre("which contact, appointment and task was the last: cannot be read; the "
                          "number of a lost one may be given away again"));
  EXPECT_EQ(Answer("fresh.db", "SELECT next_oid FROM oid_counter"), "71");
}

TEST_F(SalvageOfAWrongTree, LeavesARowWithAnImpossibleNumberAndTheCounterAsItIs) {
  ASSERT_TRUE(RunSqlOn("damaged.db", "UPDATE contacts SET oid = 8589934592 WHERE oid = 12"));
  const Outcome outcome = SalvageAnew();
  EXPECT_THAT(outcome.salvage.lost, Contains("contacts: damaged; some that cannot be named may be "
                                             "lost"));
  EXPECT_EQ(Answer("fresh.db", "SELECT next_oid FROM oid_counter"),
            Answer("whole.db", "SELECT next_oid FROM oid_counter"));
}

TEST_F(SalvageOfAWrongTree, FindsAPlaceForMessagesAndFoldersWhoseStoreIsLost) {
  ASSERT_TRUE(RunSqlOn("damaged.db",
                       "INSERT INTO message_stores VALUES (50, x'50', 'Mail', null, null, null);"
                       "INSERT INTO message_folders VALUES (51, 50, NULL, x'51', 'Top'),"
                       "(52, 50, 51, x'52', 'Below'), (53, 50, 54, x'53', 'Round'),"
                       "(54, 50, 53, x'54', 'Round');"
                       "INSERT INTO messages (id, folder) VALUES (60, 52), (61, 777);"
                       "DELETE FROM message_stores; DELETE FROM message_folders WHERE id < 7"));
  const Outcome outcome = SalvageAnew();
  EXPECT_EQ(outcome.status, S_OK);
  EXPECT_EQ(Answer("fresh.db",
                   "SELECT group_concat(id || ' ' || store || ' ' || parent, ', ') FROM "
                   "message_folders WHERE id > 50"),
            "51 1 2, 52 1 51, 53 1 2, 54 1 2");
  EXPECT_EQ(Answer("fresh.db", "SELECT group_concat(folder) FROM messages WHERE id > 50"), "52,3");
}

TEST_F(SalvageOfAWrongTree, TellsHowManyLossesItDoesNotName) {
  ASSERT_TRUE(RunSql(*handheld_,
                     "WITH n (i) AS (VALUES (1000) UNION ALL SELECT i + 1 FROM n LIMIT 250) "
                     "INSERT INTO messages (id, folder) SELECT i, 999999 FROM n"));
  fs::remove(directory_ / "damaged.db");
  ASSERT_TRUE(RunSql(*handheld_, "VACUUM INTO '" + std::string(directory_ / "damaged.db") + "'"));
  const Outcome outcome = SalvageAnew();
  EXPECT_EQ(outcome.salvage.lost.size(), 201u);
  EXPECT_EQ(outcome.salvage.lost.back(), "and 50 more");
}

}  // namespace
}  // namespace ce::host::testing
