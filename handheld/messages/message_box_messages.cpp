#include <algorithm>
#include <limits>

#include "common/text/unicode.h"
#include "handheld/messages/entry_id.h"
#include "handheld/messages/message_box_frame.h"
#include "platform/mapi.h"

namespace ce::host {
namespace {

constexpr char kFindFolderStore[] = "SELECT store FROM message_folders WHERE id = ?1";

void BindOptional(Statement& statement, int parameter, const std::optional<std::int64_t>& value) {
  if (value) {
    statement.BindInteger(parameter, *value);
  } else {
    statement.BindNull(parameter);
  }
}

// A text for the time that it is bound.
class BoundText {
 public:
  BoundText(Statement& statement, int parameter, const std::optional<std::u16string>& text) {
    if (text) {
      text::AppendWtf8(stored_, *text);
      statement.BindText(parameter, stored_);
    } else {
      statement.BindNull(parameter);
    }
  }
  BoundText(const BoundText&) = delete;
  BoundText& operator=(const BoundText&) = delete;

 private:
  std::string stored_;
};

std::optional<std::u16string> TextOf(const Statement& row, int column) {
  if (row.IsNull(column)) return std::nullopt;
  return text::FromWtf8(row.Text(column));
}

std::optional<std::int64_t> TicksOf(const Statement& row, int column) {
  if (row.IsNull(column)) return std::nullopt;
  return row.Integer(column);
}

std::optional<LONG> LongOf(const Statement& row, int column) {
  if (row.IsNull(column)) return std::nullopt;
  return static_cast<LONG>(row.Integer(column));
}

}  // namespace

HRESULT MessageBox::Insert(std::int64_t folder, const StoredMessage& message, std::int64_t* id) {
  return Change("MessageBox::Insert", [&]() -> HRESULT {
    std::int64_t made = 0;
    HRESULT status = InsertMessage(folder, message, made);
    if (Succeeded(status)) status = InsertRecipients(made, message.recipients);
    if (Succeeded(status) && id) *id = made;
    return status;
  });
}

HRESULT MessageBox::InsertMessage(std::int64_t folder, const StoredMessage& message,
                                  std::int64_t& id) {
  static constexpr char kSql[] =
      "INSERT INTO messages (id, folder, entry_id, message_class, delivery_time, flags, status,"
      " subject, sender_name, sender_address, size, last_modification_time)"
      " VALUES (?1, ?2, ?3, ?4, ?5, ?6, ?7, ?8, ?9, ?10, ?11, ?12)";
  std::int64_t store = 0;
  if (const HRESULT status = RequireRow(kFindFolderStore, folder, &store); Failed(status)) {
    return status;
  }
  const bool makeEntryId = message.entryId && message.entryId->empty();
  if (message.entryId && !makeEntryId) {
    bool taken = false;
    if (const HRESULT status = EntryIsTaken(*message.entryId, taken); Failed(status)) return status;
    if (taken) return E_INVALIDARG;
  }
  if (const HRESULT status = TakeId(id); Failed(status)) return status;
  const EntryId entryId = MakeEntryId(MAPI_MESSAGE, store, id);
  Statement insert;
  if (const HRESULT status = store_->Prepare(kSql, insert); Failed(status)) return status;
  insert.BindInteger(1, id);
  insert.BindInteger(2, folder);
  if (makeEntryId) {
    insert.BindBlob(3, entryId.data(), entryId.size());
  } else {
    BindEntryId(insert, 3, message.entryId);
  }
  const BoundText messageClass(insert, 4, message.messageClass);
  BindOptional(insert, 5, message.deliveryTime);
  BindOptional(insert, 6, message.flags);
  BindOptional(insert, 7, message.status);
  const BoundText subject(insert, 8, message.subject);
  const BoundText senderName(insert, 9, message.senderName);
  const BoundText senderAddress(insert, 10, message.senderAddress);
  BindOptional(insert, 11, message.size);
  BindOptional(insert, 12, message.lastModificationTime);
  return insert.Run(kMessageStep);
}

HRESULT MessageBox::InsertRecipients(std::int64_t message,
                                     const std::vector<StoredRecipient>& recipients) {
  static constexpr char kSql[] =
      "INSERT INTO message_recipients (message, position, display_name, address)"
      " VALUES (?1, ?2, ?3, ?4)";
  for (std::size_t i = 0; i < recipients.size(); ++i) {
    Statement insert;
    if (const HRESULT status = store_->Prepare(kSql, insert); Failed(status)) return status;
    insert.BindInteger(1, message);
    insert.BindInteger(2, static_cast<std::int64_t>(i));
    const BoundText name(insert, 3, recipients[i].name);
    const BoundText address(insert, 4, recipients[i].address);
    if (const HRESULT status = insert.Run(kMessageStep); Failed(status)) return status;
  }
  return S_OK;
}

// Folders count as well: their entries are opened by the same call.
HRESULT MessageBox::EntryIsTaken(const EntryIdBytes& entryId, bool& taken) {
  static constexpr char kSql[] =
      "SELECT 1 FROM messages WHERE entry_id = ?1"
      " UNION ALL SELECT 1 FROM message_folders WHERE entry_id = ?1";
  Statement find;
  if (const HRESULT status = store_->Prepare(kSql, find); Failed(status)) return status;
  BindEntryId(find, 1, entryId);
  return find.Step(kMessageStep, taken);
}

HRESULT MessageBox::FindMessage(const EntryIdBytes& entryId, std::optional<std::int64_t>& id) {
  static constexpr char kSql[] = "SELECT id FROM messages WHERE entry_id = ?1";
  id.reset();
  return Call("MessageBox::FindMessage", [&] {
    Statement find;
    if (const HRESULT status = store_->Prepare(kSql, find); Failed(status)) return status;
    BindEntryId(find, 1, entryId);
    bool row = false;
    const HRESULT status = find.Step(kMessageStep, row);
    if (row) id = find.Integer(0);
    return status;
  });
}

HRESULT MessageBox::Read(std::int64_t folder, std::int64_t after, std::size_t limit,
                         std::vector<NumberedMessage>& messages) {
  static constexpr char kSql[] =
      "SELECT id, entry_id, message_class, delivery_time, flags, status, subject, sender_name,"
      " sender_address, size, last_modification_time FROM messages"
      " WHERE folder = ?1 AND id > ?2 ORDER BY id LIMIT ?3";
  messages.clear();
  return Call("MessageBox::Read", [&]() -> HRESULT {
    constexpr auto kMost = static_cast<std::size_t>(std::numeric_limits<std::int64_t>::max());
    Statement list;
    if (const HRESULT status = store_->Prepare(kSql, list); Failed(status)) return status;
    list.BindInteger(1, folder);
    list.BindInteger(2, after);
    list.BindInteger(3, static_cast<std::int64_t>(std::min(limit, kMost)));
    for (;;) {
      bool row = false;
      if (const HRESULT status = list.Step(kMessageStep, row); Failed(status)) return status;
      if (!row) return S_OK;
      NumberedMessage read;
      read.id = list.Integer(0);
      StoredMessage& message = read.message;
      message.entryId = EntryIdOf(list, 1);
      message.messageClass = TextOf(list, 2);
      message.deliveryTime = TicksOf(list, 3);
      message.flags = LongOf(list, 4);
      message.status = LongOf(list, 5);
      message.subject = TextOf(list, 6);
      message.senderName = TextOf(list, 7);
      message.senderAddress = TextOf(list, 8);
      message.size = LongOf(list, 9);
      message.lastModificationTime = TicksOf(list, 10);
      if (const HRESULT status = ReadRecipients(read.id, message.recipients); Failed(status)) {
        return status;
      }
      messages.push_back(std::move(read));
    }
  });
}

HRESULT MessageBox::ReadRecipients(std::int64_t message, std::vector<StoredRecipient>& recipients) {
  static constexpr char kSql[] =
      "SELECT display_name, address FROM message_recipients WHERE message = ?1 ORDER BY position";
  Statement list;
  if (const HRESULT status = store_->Prepare(kSql, list); Failed(status)) return status;
  list.BindInteger(1, message);
  for (;;) {
    bool row = false;
    if (const HRESULT status = list.Step(kMessageStep, row); Failed(status)) return status;
    if (!row) return S_OK;
    recipients.push_back({TextOf(list, 0), TextOf(list, 1)});
  }
}

HRESULT MessageBox::Count(std::int64_t folder, std::int64_t& count) {
  static constexpr char kSql[] = "SELECT count(*) FROM messages WHERE folder = ?1";
  count = 0;
  return Call("MessageBox::Count", [&] { return RequireRow(kSql, folder, &count); });
}

HRESULT MessageBox::Delete(std::int64_t message, bool& found) {
  static constexpr char kSql[] = "DELETE FROM messages WHERE id = ?1";
  found = false;
  return Change("MessageBox::Delete", [&] {
    Statement remove;
    if (const HRESULT status = store_->Prepare(kSql, remove); Failed(status)) return status;
    remove.BindInteger(1, message);
    const HRESULT status = remove.Run(kMessageStep);
    found = Succeeded(status) && store_->Changes() > 0;
    return status;
  });
}

HRESULT MessageBox::Clear(std::int64_t folder) {
  static constexpr char kSql[] = "DELETE FROM messages WHERE folder = ?1";
  return Change("MessageBox::Clear", [&] {
    Statement remove;
    if (const HRESULT status = store_->Prepare(kSql, remove); Failed(status)) return status;
    remove.BindInteger(1, folder);
    return remove.Run(kMessageStep);
  });
}

}  // namespace ce::host
