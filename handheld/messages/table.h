// The tables of the handheld's MAPI: a position in an ordered query.
#pragma once

#include <cstdint>

#include "handheld/messages/message_session.h"
#include "handheld/messages/properties.h"

namespace ce::host {

// Rows are read by number (column 0), ascending: ?1 is the owner whose rows they are, ?2 the number
// of the row before, ?3 how many. The next row is found in the index, however many there are.
struct TableKind {
  PropertyQuery rows;
  PropertyQuery severalRows;  // the default columns where more than one row is asked for
  const char* countSql;       // ?1 is the owner
};

extern const TableKind kStoresTable;     // the owner is not looked at
extern const TableKind kHierarchyTable;  // of a folder
// Of a folder. All properties of a message are among its columns: kMessageTags.
extern const TableKind kContentsTable;
extern const std::span<const DWORD> kMessageTags;
extern const TableKind kRecipientTable;  // of a message

IMAPITable* MakeTable(const MessageSessionPtr& session, const TableKind& kind, std::int64_t owner);

// Rows that such a table of this owner has at the moment.
[[nodiscard]] HRESULT CountRows(Store& store, const TableKind& kind, std::int64_t owner,
                                std::int64_t& count);

}  // namespace ce::host
