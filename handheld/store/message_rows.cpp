#include <algorithm>
#include <limits>
#include <string>

#include "handheld/store/message_stores.h"
#include "platform/mapi.h"

namespace ce::host {

HRESULT MessageStores::Insert(std::int64_t folder, const StoredMessage& message, std::int64_t* id) {
  return Change("MessageStores::Insert", [&]() -> HRESULT {
    std::int64_t made = 0;
    RETURN_IF_FAILED(InsertMessage(folder, message, made));
    RETURN_IF_FAILED(InsertRecipients(made, message.recipients));
    if (id) *id = made;
    return S_OK;
  });
}

HRESULT MessageStores::InsertMessage(std::int64_t folder, const StoredMessage& message,
                                     std::int64_t& id) {
  static constexpr char kFolderStore[] = "SELECT store FROM message_folders WHERE id = ?1";
  // Folders count as well: their entries are opened by the same call.
  static constexpr char kTaken[] =
      "SELECT 1 FROM messages WHERE entry_id = ?1"
      " UNION ALL SELECT 1 FROM message_folders WHERE entry_id = ?1";
  static const std::string kInsert = [] {
    ColumnNames columns = {"id", "folder"};
    AppendNames(columns, kMessageColumns);
    return InsertSql("INSERT INTO messages", columns);
  }();
  std::int64_t owner = 0;
  RETURN_IF_FAILED(RequireRow(kFolderStore, folder, &owner));
  const bool makeEntryId = message.entryId && message.entryId->empty();
  if (message.entryId && !makeEntryId) {
    Statement find;
    bool taken = false;
    RETURN_IF_FAILED(store().Find(kTaken, kStep, find, taken, *message.entryId));
    if (taken) return E_INVALIDARG;
  }
  RETURN_IF_FAILED(TakeId(id));
  const EntryId made = MakeEntryId(MAPI_MESSAGE, owner, id);
  Statement insert;
  RETURN_IF_FAILED(store().Prepare(kInsert.c_str(), insert, id, folder));
  BindColumns<StoredMessage>(insert, 3, kMessageColumns, message);
  if (makeEntryId) insert.BindBlob(3, made.data(), made.size());
  return insert.Run(kStep);
}

HRESULT MessageStores::InsertRecipients(std::int64_t message,
                                        const std::vector<StoredRecipient>& recipients) {
  static constexpr char kSql[] =
      "INSERT INTO message_recipients (message, position, display_name, address)"
      " VALUES (?1, ?2, ?3, ?4)";
  for (std::size_t i = 0; i < recipients.size(); ++i) {
    RETURN_IF_FAILED(
        store().Run(kSql, kStep, message, i, recipients[i].name, recipients[i].address));
  }
  return S_OK;
}

HRESULT MessageStores::FindMessage(const EntryIdBytes& entryId, std::optional<std::int64_t>& id) {
  static constexpr char kSql[] = "SELECT id FROM messages WHERE entry_id = ?1";
  id.reset();
  return Guarded("MessageStores::FindMessage", [&] {
    Statement find;
    bool row = false;
    const HRESULT status = store().Find(kSql, kStep, find, row, entryId);
    if (row) id = find.Integer(0);
    return status;
  });
}

HRESULT MessageStores::Read(std::int64_t folder, std::int64_t after, std::size_t limit,
                            std::vector<NumberedMessage>& messages) {
  static const std::string kSql = [] {
    ColumnNames columns = {"id"};
    AppendNames(columns, kMessageColumns);
    return "SELECT " + ColumnList(ColumnForm::kNames, columns, 1) +
           " FROM messages WHERE folder = ?1 AND id > ?2 ORDER BY id LIMIT ?3";
  }();
  messages.clear();
  return Guarded("MessageStores::Read", [&]() -> HRESULT {
    constexpr auto kMost = static_cast<std::size_t>(std::numeric_limits<std::int64_t>::max());
    Statement list;
    RETURN_IF_FAILED(store().Prepare(kSql.c_str(), list, folder, after, std::min(limit, kMost)));
    for (;;) {
      bool row = false;
      RETURN_IF_FAILED(list.Step(kStep, row));
      if (!row) return S_OK;
      NumberedMessage read;
      list.Load(0, read.id);
      LoadColumns<StoredMessage>(list, 1, kMessageColumns, read.message);
      RETURN_IF_FAILED(ReadRecipients(read.id, read.message.recipients));
      messages.push_back(std::move(read));
    }
  });
}

HRESULT MessageStores::ReadRecipients(std::int64_t message,
                                      std::vector<StoredRecipient>& recipients) {
  static constexpr char kSql[] =
      "SELECT display_name, address FROM message_recipients WHERE message = ?1 ORDER BY position";
  Statement list;
  RETURN_IF_FAILED(store().Prepare(kSql, list, message));
  return list.ForEachRow(kStep, [&] {
    LoadColumns<StoredRecipient>(list, 0, kRecipientColumns, recipients.emplace_back());
  });
}

HRESULT MessageStores::Count(std::int64_t folder, std::int64_t& count) {
  static constexpr char kSql[] = "SELECT count(*) FROM messages WHERE folder = ?1";
  count = 0;
  return Guarded("MessageStores::Count", [&] { return RequireRow(kSql, folder, &count); });
}

HRESULT MessageStores::Delete(std::int64_t message, bool& found) {
  static constexpr char kSql[] = "DELETE FROM messages WHERE id = ?1";
  found = false;
  store().PrepareToDelete();
  return Change("MessageStores::Delete",
                [&] { return store().Change(kSql, kStep, found, message); });
}

HRESULT MessageStores::Clear(std::int64_t folder) {
  static constexpr char kSql[] = "DELETE FROM messages WHERE folder = ?1";
  store().PrepareToDelete();
  return Change("MessageStores::Clear", [&] { return store().Run(kSql, kStep, folder); });
}

}  // namespace ce::host
