#include <sqlite3.h>

#include <mutex>
#include <system_error>

#include "handheld/base/fault.h"
#include "handheld/store/store.h"
#include "handheld/store/store_copy.h"
#include "handheld/store/store_error.h"
#include "handheld/store/store_schema.h"

namespace ce::host {
namespace {

// What is deleted leaves nothing in the file that could come back with a repair. The cache is
// bounded, and so is the write-ahead log once its content has moved to the database.
constexpr char kSettings[] =
    "PRAGMA synchronous = FULL;"
    "PRAGMA secure_delete = ON;"
    "PRAGMA foreign_keys = ON;"
    "PRAGMA trusted_schema = OFF;"
    "PRAGMA cache_size = -512;"
    "PRAGMA journal_size_limit = 4194304;";

// Two connections that make the same new store would meet in SQLite's change to the write-ahead
// log, which does not wait. The handheld's directory belongs to one process.
std::mutex& OpenLock() {
  static std::mutex lock;
  return lock;
}

// Before the first connection. What a savepoint keeps of a write lies in small blocks of memory.
// What SQLite counts of its memory it counts under a lock of all threads, at every allocation;
// nobody asks for it.
void ConfigureSqlite() {
  static std::once_flag once;
  std::call_once(once, [] {
    sqlite3_config(SQLITE_CONFIG_STMTJRNL_SPILL, -1);
    sqlite3_config(SQLITE_CONFIG_MEMSTATUS, 0);
  });
}

HRESULT UseWriteAheadLog(sqlite3* database) {
  sqlite3_stmt* statement = nullptr;
  int result = sqlite3_prepare_v2(database, "PRAGMA journal_mode = WAL", -1, &statement, nullptr);
  if (result == SQLITE_OK) result = sqlite3_step(statement);
  std::string mode;
  if (result == SQLITE_ROW) {
    const auto* text = reinterpret_cast<const char*>(sqlite3_column_text(statement, 0));
    if (text) mode = text;
  }
  sqlite3_finalize(statement);
  RETURN_IF_FAILED(StoreStatus(result));
  return mode == "wal" ? S_OK : kStoreCannotOpen;
}

HRESULT Worded(HRESULT status, std::string& problem) {
  if (Failed(status)) problem = StoreStatusText(status);
  return status;
}

bool IsNew(const Handheld& handheld) {
  return handheld.Number(kStoreCreated, 0) == 0;
}

// Once the handheld knows of its store, a store that has gone missing is not replaced by an empty
// one, which would give identifiers away again.
HRESULT RememberStore(Handheld& handheld, std::string& problem) {
  if (!IsNew(handheld)) return S_OK;
  try {
    handheld.Set(kStoreCreated, DWORD{1});
    return S_OK;
  } catch (const HandheldError& error) {
    problem = error.what();
    return kStoreWriteFault;
  }
}

}  // namespace

bool Store::Exists(const std::filesystem::path& path) {
  std::error_code error;
  const auto status = std::filesystem::status(path, error);
  if (!std::filesystem::is_regular_file(status)) return std::filesystem::exists(status);
  return std::filesystem::file_size(path, error) != 0;
}

HRESULT Store::Connect(const std::string& path, bool create, std::string& problem) {
  RETURN_IF_FAILED(Worded(FaultStatus("sqlite3_open"), problem));
  ConfigureSqlite();
  const int flags = SQLITE_OPEN_READWRITE | SQLITE_OPEN_NOMUTEX | SQLITE_OPEN_EXRESCODE |
                    (create ? SQLITE_OPEN_CREATE : 0);
  RETURN_IF_FAILED(
      Worded(StoreStatus(sqlite3_open_v2(path.c_str(), &database_, flags, nullptr)), problem));
  // SQLite falls back to reading when it may not write.
  if (sqlite3_db_readonly(database_, "main") != 0) return Worded(E_ACCESSDENIED, problem);
  sqlite3_busy_timeout(database_, static_cast<int>(kWritePatience.count()));
  sqlite3_db_config(database_, SQLITE_DBCONFIG_DEFENSIVE, 1, nullptr);
  RETURN_IF_FAILED(Worded(FaultStatus("sqlite3_exec"), problem));
  HRESULT status = StoreStatus(sqlite3_exec(database_, kSettings, nullptr, nullptr, nullptr));
  if (Succeeded(status)) status = PrepareTransactions();
  return Worded(status, problem);
}

HRESULT Store::OpenToLook(const Handheld& handheld, std::unique_ptr<Store>& store,
                          std::string& problem) {
  RETURN_IF_FAILED(OpenExisting(handheld, store, problem));
  const char* const sql = "PRAGMA query_only = ON";
  HRESULT status = StoreStatus(sqlite3_exec(store->database_, sql, nullptr, nullptr, nullptr));
  if (Succeeded(status)) status = store->BeginSnapshot();
  if (Failed(status)) store.reset();
  return Worded(status, problem);
}

HRESULT Store::Open(Handheld& handheld, std::unique_ptr<Store>& store, std::string& problem) {
  if (handheld.IsShared()) return OpenToLook(handheld, store, problem);
  const std::lock_guard guard(OpenLock());
  store.reset();
  const bool isNew = IsNew(handheld);
  if (!isNew && !Exists(handheld.storePath())) return Worded(kStoreMissing, problem);
  std::unique_ptr<Store> opened(new Store);
  RETURN_IF_FAILED(opened->Connect(handheld.storePath().string(), isNew, problem));
  RETURN_IF_FAILED(
      BringUpToDate(opened->database_, isNew, handheld.Number(setting::kFirstOid, 1), problem));
  RETURN_IF_FAILED(Worded(UseWriteAheadLog(opened->database_), problem));
  RETURN_IF_FAILED(RememberStore(handheld, problem));
  opened->reserve_ = handheld.reservePath();
  store = std::move(opened);
  return S_OK;
}

HRESULT Store::OpenExisting(const Handheld& handheld, std::unique_ptr<Store>& store,
                            std::string& problem) {
  return OpenExisting(handheld, handheld.storePath(), store, problem);
}

HRESULT Store::OpenExisting(const Handheld& handheld, const std::filesystem::path& path,
                            std::unique_ptr<Store>& store, std::string& problem) {
  const std::lock_guard guard(OpenLock());
  store.reset();
  if (!Exists(path)) return Worded(kStoreMissing, problem);
  const bool isNew = IsNew(handheld);
  std::unique_ptr<Store> opened(new Store);
  RETURN_IF_FAILED(opened->Connect(path.string(), false, problem));
  RETURN_IF_FAILED(CheckFormat(opened->database_, isNew, problem));
  store = std::move(opened);
  return S_OK;
}

HRESULT Store::CopyTo(const std::filesystem::path& to) {
  return CopyDatabase(database_, to);
}

}  // namespace ce::host
