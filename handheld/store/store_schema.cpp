#include "handheld/store/store_schema.h"

#include <sqlite3.h>

#include <algorithm>
#include <cstdint>

#include "handheld/base/fault.h"
#include "handheld/store/store_copy.h"
#include "handheld/store/store_error.h"
#include "platform/status.h"

namespace ce::host {
namespace {

// What leads from format n to n + 1 stands at n and never changes once a store has taken it.
//
// Text is UTF-8; a surrogate without its partner is kept as the three bytes that its value would
// take. FileAs is NULL while it was never set. Dates are OLE dates, 949998.0 for none. An item that
// does not recur has NULL in RecurrenceType and all that belongs to it. The OriginalDay of an
// exception is the whole number of an OLE date.
//
// Message stores, folders and messages have their identifiers from one counter, which never gives
// one away again. Entry identifiers are bytes of any length, each unique in its table; a message
// may lack its own. A folder without a parent is the top of its store's tree. Of a message and of a
// call, NULL is a property that it lacks. Their times are file times, the 64 bits as a signed
// number. A handheld comes with the message store of its telephone. Identifiers of calls are never
// given away again, either.
constexpr const char* kSteps[] = {
    R"sql(
CREATE TABLE oid_counter (
  only_row INTEGER PRIMARY KEY CHECK (only_row = 1),
  next_oid INTEGER NOT NULL
);
INSERT INTO oid_counter VALUES (1, 1);
CREATE TABLE contacts (
  oid INTEGER PRIMARY KEY,
  Birthday REAL NOT NULL,
  Anniversary REAL NOT NULL,
  BusinessAddressStreet TEXT NOT NULL,
  BusinessAddressCity TEXT NOT NULL,
  BusinessAddressState TEXT NOT NULL,
  BusinessAddressPostalCode TEXT NOT NULL,
  BusinessAddressCountry TEXT NOT NULL,
  BusinessFaxNumber TEXT NOT NULL,
  BusinessTelephoneNumber TEXT NOT NULL,
  CompanyName TEXT NOT NULL,
  Department TEXT NOT NULL,
  Email1Address TEXT NOT NULL,
  MobileTelephoneNumber TEXT NOT NULL,
  OfficeLocation TEXT NOT NULL,
  PagerNumber TEXT NOT NULL,
  JobTitle TEXT NOT NULL,
  HomeTelephoneNumber TEXT NOT NULL,
  Email2Address TEXT NOT NULL,
  Spouse TEXT NOT NULL,
  Email3Address TEXT NOT NULL,
  Home2TelephoneNumber TEXT NOT NULL,
  HomeFaxNumber TEXT NOT NULL,
  CarTelephoneNumber TEXT NOT NULL,
  AssistantName TEXT NOT NULL,
  AssistantTelephoneNumber TEXT NOT NULL,
  Children TEXT NOT NULL,
  Categories TEXT NOT NULL,
  WebPage TEXT NOT NULL,
  Business2TelephoneNumber TEXT NOT NULL,
  Title TEXT NOT NULL,
  FirstName TEXT NOT NULL,
  MiddleName TEXT NOT NULL,
  LastName TEXT NOT NULL,
  Suffix TEXT NOT NULL,
  HomeAddressStreet TEXT NOT NULL,
  HomeAddressCity TEXT NOT NULL,
  HomeAddressState TEXT NOT NULL,
  HomeAddressPostalCode TEXT NOT NULL,
  HomeAddressCountry TEXT NOT NULL,
  OtherAddressStreet TEXT NOT NULL,
  OtherAddressCity TEXT NOT NULL,
  OtherAddressState TEXT NOT NULL,
  OtherAddressPostalCode TEXT NOT NULL,
  OtherAddressCountry TEXT NOT NULL,
  RadioTelephoneNumber TEXT NOT NULL,
  FileAs TEXT,
  Body TEXT NOT NULL,
  YomiCompanyName TEXT NOT NULL,
  YomiFirstName TEXT NOT NULL,
  YomiLastName TEXT NOT NULL,
  BodyInk BLOB
);
CREATE TABLE import_ledger (
  kind INTEGER NOT NULL,
  identity TEXT NOT NULL,
  oid INTEGER NOT NULL,
  content TEXT NOT NULL,
  PRIMARY KEY (kind, identity)
) WITHOUT ROWID;
)sql",
    R"sql(
CREATE TABLE appointments (
  oid INTEGER PRIMARY KEY,
  Start REAL NOT NULL,
  "End" REAL NOT NULL,
  Duration INTEGER NOT NULL,
  AllDayEvent INTEGER NOT NULL,
  BusyStatus INTEGER NOT NULL,
  Sensitivity INTEGER NOT NULL,
  ReminderSet INTEGER NOT NULL,
  ReminderMinutesBeforeStart INTEGER NOT NULL,
  Subject TEXT NOT NULL,
  Location TEXT NOT NULL,
  Categories TEXT NOT NULL,
  RecurrenceType INTEGER,
  Interval INTEGER,
  DayOfWeekMask INTEGER,
  DayOfMonth INTEGER,
  Instance INTEGER,
  MonthOfYear INTEGER,
  Occurrences INTEGER,
  PatternEndDate REAL,
  PatternStartDate REAL,
  Body TEXT NOT NULL,
  BodyInk BLOB
);
CREATE TABLE exceptions (
  oid INTEGER NOT NULL REFERENCES appointments ON DELETE CASCADE,
  OriginalDay INTEGER NOT NULL,
  Deleted INTEGER NOT NULL,
  Start REAL NOT NULL,
  "End" REAL NOT NULL,
  Duration INTEGER NOT NULL,
  AllDayEvent INTEGER NOT NULL,
  BusyStatus INTEGER NOT NULL,
  Sensitivity INTEGER NOT NULL,
  ReminderSet INTEGER NOT NULL,
  ReminderMinutesBeforeStart INTEGER NOT NULL,
  Subject TEXT NOT NULL,
  Location TEXT NOT NULL,
  Categories TEXT NOT NULL,
  Body TEXT NOT NULL,
  BodyInk BLOB,
  PRIMARY KEY (oid, OriginalDay)
);
CREATE TABLE tasks (
  oid INTEGER PRIMARY KEY,
  StartDate REAL NOT NULL,
  DueDate REAL NOT NULL,
  DateCompleted REAL NOT NULL,
  ReminderTime REAL NOT NULL,
  Importance INTEGER NOT NULL,
  Complete INTEGER NOT NULL,
  Sensitivity INTEGER NOT NULL,
  ReminderSet INTEGER NOT NULL,
  Subject TEXT NOT NULL,
  Categories TEXT NOT NULL,
  RecurrenceType INTEGER,
  Interval INTEGER,
  DayOfWeekMask INTEGER,
  DayOfMonth INTEGER,
  Instance INTEGER,
  MonthOfYear INTEGER,
  Occurrences INTEGER,
  PatternEndDate REAL,
  PatternStartDate REAL,
  Body TEXT NOT NULL,
  BodyInk BLOB
);
)sql",
    R"sql(
CREATE TABLE message_id_counter (
  only_row INTEGER PRIMARY KEY CHECK (only_row = 1),
  next_id INTEGER NOT NULL
);
INSERT INTO message_id_counter VALUES (1, 8);
CREATE TABLE message_stores (
  id INTEGER PRIMARY KEY,
  entry_id BLOB NOT NULL UNIQUE,
  display_name TEXT NOT NULL UNIQUE,
  subtree_entry_id BLOB,
  drafts_entry_id BLOB,
  wastebasket_entry_id BLOB
);
CREATE TABLE message_folders (
  id INTEGER PRIMARY KEY,
  store INTEGER NOT NULL REFERENCES message_stores ON DELETE CASCADE,
  parent INTEGER REFERENCES message_folders ON DELETE CASCADE,
  entry_id BLOB NOT NULL UNIQUE,
  display_name TEXT NOT NULL
);
CREATE INDEX message_folders_by_parent ON message_folders (parent);
CREATE INDEX message_folders_by_store ON message_folders (store);
CREATE TABLE messages (
  id INTEGER PRIMARY KEY,
  folder INTEGER NOT NULL REFERENCES message_folders ON DELETE CASCADE,
  entry_id BLOB UNIQUE,
  message_class TEXT,
  delivery_time INTEGER,
  flags INTEGER,
  status INTEGER,
  subject TEXT,
  sender_name TEXT,
  sender_address TEXT,
  size INTEGER,
  last_modification_time INTEGER
);
CREATE INDEX messages_by_folder ON messages (folder);
CREATE TABLE message_recipients (
  message INTEGER NOT NULL REFERENCES messages ON DELETE CASCADE,
  position INTEGER NOT NULL,
  display_name TEXT,
  address TEXT,
  PRIMARY KEY (message, position)
) WITHOUT ROWID;
INSERT INTO message_stores VALUES (1, x'0000000000000001000000010000000000000001', 'SMS',
  x'0000000000000003000000010000000000000002', x'0000000000000003000000010000000000000006',
  x'0000000000000003000000010000000000000007');
INSERT INTO message_folders VALUES
  (2, 1, NULL, x'0000000000000003000000010000000000000002', 'IPM_SUBTREE'),
  (3, 1, 2, x'0000000000000003000000010000000000000003', 'Inbox'),
  (4, 1, 2, x'0000000000000003000000010000000000000004', 'Outbox'),
  (5, 1, 2, x'0000000000000003000000010000000000000005', 'Sent Items'),
  (6, 1, 2, x'0000000000000003000000010000000000000006', 'Drafts'),
  (7, 1, 2, x'0000000000000003000000010000000000000007', 'Deleted Items');
)sql",
    R"sql(
CREATE TABLE calls (
  id INTEGER PRIMARY KEY AUTOINCREMENT,
  start_time INTEGER NOT NULL,
  end_time INTEGER NOT NULL,
  kind INTEGER NOT NULL,
  flags INTEGER NOT NULL,
  caller_id_type INTEGER NOT NULL,
  number TEXT,
  name TEXT,
  name_type TEXT,
  note TEXT
);
CREATE INDEX calls_by_start ON calls (start_time);
)sql",
};
static_assert(std::size(kSteps) == kStoreFormat);

HRESULT Execute(sqlite3* database, const std::string& sql) {
  RETURN_IF_FAILED(FaultStatus("sqlite3_step:schema"));
  return StoreStatus(sqlite3_exec(database, sql.c_str(), nullptr, nullptr, nullptr));
}

HRESULT ReadNumber(sqlite3* database, const char* sql, std::int64_t& number) {
  RETURN_IF_FAILED(FaultStatus("sqlite3_step:schema"));
  sqlite3_stmt* statement = nullptr;
  int result = sqlite3_prepare_v2(database, sql, -1, &statement, nullptr);
  if (result == SQLITE_OK) result = sqlite3_step(statement);
  number = result == SQLITE_ROW ? sqlite3_column_int64(statement, 0) : 0;
  sqlite3_finalize(statement);
  return result == SQLITE_DONE ? kStoreDamaged : StoreStatus(result);
}

struct Identity {
  std::int64_t format = 0;
  std::int64_t applicationId = 0;
  std::int64_t objects = 0;

  bool IsEmpty() const { return format == 0 && applicationId == 0 && objects == 0; }
};

HRESULT Identify(sqlite3* database, bool mayBeEmpty, Identity& identity, std::string& problem) {
  HRESULT status = ReadNumber(database, "PRAGMA user_version", identity.format);
  if (Succeeded(status)) {
    status = ReadNumber(database, "PRAGMA application_id", identity.applicationId);
  }
  if (Succeeded(status)) {
    status = ReadNumber(database, "SELECT count(*) FROM sqlite_schema", identity.objects);
  }
  if (Failed(status)) {
    problem = StoreStatusText(status);
    return status;
  }
  if (identity.IsEmpty() && !mayBeEmpty) {
    problem = StoreStatusText(kStoreMissing);
    return kStoreMissing;
  }
  if (!identity.IsEmpty() && identity.applicationId != kStoreApplicationId) {
    problem = "is another program's database";
    return kStoreDamaged;
  }
  if (identity.format > kStoreFormat) {
    problem = StoreStatusText(kStoreNewerFormat) + " (format " + std::to_string(identity.format) +
              ", this one knows " + std::to_string(kStoreFormat) + ")";
    return kStoreNewerFormat;
  }
  if (identity.format < 0) {
    problem = StoreStatusText(kStoreDamaged);
    return kStoreDamaged;
  }
  return S_OK;
}

std::string MigrationSql(std::int64_t from, DWORD firstOid) {
  std::string sql = "BEGIN IMMEDIATE;";
  for (auto format = static_cast<std::size_t>(from); format < std::size(kSteps); ++format) {
    sql += kSteps[format];
  }
  if (from == 0) {
    sql += "UPDATE oid_counter SET next_oid = " + std::to_string(std::max<DWORD>(firstOid, 1)) +
           ";PRAGMA application_id = " + std::to_string(kStoreApplicationId) + ";";
  }
  return sql + "PRAGMA user_version = " + std::to_string(kStoreFormat) + ";COMMIT;";
}

// The store as it is before it is brought up to date, beside it: "store.db.format-3".
HRESULT KeepCopy(sqlite3* database, std::int64_t format) {
  const std::string path = sqlite3_db_filename(database, "main");
  return CopyDatabase(database, path + ".format-" + std::to_string(format));
}

// A store that its own tables can be read from, as far as that can be told without reading it all.
HRESULT CheckTables(sqlite3* database, std::string& problem) {
  std::int64_t ignored = 0;
  HRESULT status = S_OK;
  for (const char* sql : {"SELECT next_oid FROM oid_counter",
                          "SELECT count(1) WHERE EXISTS(SELECT oid, BodyInk FROM contacts)",
                          "SELECT count(1) WHERE EXISTS(SELECT oid, BodyInk FROM appointments)",
                          "SELECT count(1) WHERE EXISTS(SELECT oid, BodyInk FROM exceptions)",
                          "SELECT count(1) WHERE EXISTS(SELECT oid, BodyInk FROM tasks)"}) {
    if (Succeeded(status)) status = ReadNumber(database, sql, ignored);
  }
  if (Failed(status)) problem = StoreStatusText(status);
  return status;
}

}  // namespace

HRESULT BringUpToDate(sqlite3* database, bool mayBeEmpty, DWORD firstOid, std::string& problem) {
  Identity identity;
  RETURN_IF_FAILED(Identify(database, mayBeEmpty, identity, problem));
  if (identity.format < kStoreFormat) {
    HRESULT status = identity.format > 0 ? KeepCopy(database, identity.format) : S_OK;
    if (Succeeded(status)) status = Execute(database, MigrationSql(identity.format, firstOid));
    if (Failed(status)) {
      sqlite3_exec(database, "ROLLBACK", nullptr, nullptr, nullptr);
      problem = StoreStatusText(status);
      return status;
    }
  }
  return CheckTables(database, problem);
}

HRESULT CheckFormat(sqlite3* database, bool mayBeEmpty, std::string& problem) {
  Identity identity;
  RETURN_IF_FAILED(Identify(database, mayBeEmpty, identity, problem));
  if (identity.format != kStoreFormat) {
    problem = "has the older format " + std::to_string(identity.format);
    return kStoreDamaged;
  }
  return CheckTables(database, problem);
}

}  // namespace ce::host
