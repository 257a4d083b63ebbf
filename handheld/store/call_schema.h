// The table of the call log, as one step of the store's schema (outlook/store_schema.cpp).
#pragma once

namespace ce::host {

// Identifiers are never given away again. Times are file times, their 64 bits as a signed number;
// of the texts, NULL is one that the call lacks, and they are stored as in the other tables.
inline constexpr char kCallSchema[] = R"sql(
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
)sql";

}  // namespace ce::host
