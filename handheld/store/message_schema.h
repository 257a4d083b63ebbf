// The tables of message stores, as one step of the store's schema (outlook/store_schema.cpp).
#pragma once

namespace ce::host {

// Identifiers are given away by one counter over all three kinds and never again. Entry identifiers
// are bytes of any length, each unique in its table; a message may lack its own. A folder without a
// parent is the top of its store's tree. Of a message, NULL is a property that it lacks. Times are
// file times, their 64 bits as a signed number; text is stored as in the other tables.
//
// A handheld comes with the store of its telephone.
inline constexpr char kMessageSchema[] = R"sql(
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
)sql";

}  // namespace ce::host
