#include "handheld/messages/table.h"

#include <algorithm>
#include <limits>
#include <utility>
#include <vector>

#include "handheld/base/com_object.h"
#include "handheld/base/guarded.h"
#include "handheld/store/row_scan.h"

namespace ce::host {
namespace {

constexpr LONG kMostRows = std::numeric_limits<LONG>::max();

constexpr DWORD kNamed[] = {PR_DISPLAY_NAME_W, PR_ENTRYID};
constexpr DWORD kMessage[] = {PR_ENTRYID,
                              PR_MESSAGE_CLASS_W,
                              PR_MESSAGE_DELIVERY_TIME,
                              PR_MESSAGE_FLAGS,
                              PR_MSG_STATUS,
                              PR_SUBJECT_W,
                              PR_SENDER_NAME_W,
                              PR_MESSAGE_SIZE,
                              PR_LAST_MODIFICATION_TIME,
                              PR_SENDER_EMAIL_ADDRESS_W};
constexpr std::size_t kUsualOfMessage = std::size(kMessage) - 1;
constexpr DWORD kIdentity[] = {PR_ENTRYID};
constexpr DWORD kRecipient[] = {PR_DISPLAY_NAME_W, PR_EMAIL_ADDRESS_W, PR_RECIPIENT_TYPE};

constexpr PropertyQuery kStores{
    "SELECT id, display_name, entry_id FROM message_stores WHERE ?1 IS NOT NULL AND id > ?2"
    " ORDER BY id LIMIT ?3",
    kNamed};
constexpr PropertyQuery kFolders{
    "SELECT id, display_name, entry_id FROM message_folders WHERE parent = ?1 AND id > ?2"
    " ORDER BY id LIMIT ?3",
    kNamed};
constexpr PropertyQuery kMessages{
    "SELECT id, entry_id, message_class, delivery_time, flags, status, subject, sender_name, size,"
    " last_modification_time, sender_address FROM messages WHERE folder = ?1 AND id > ?2"
    " ORDER BY id LIMIT ?3",
    kMessage, kUsualOfMessage};
constexpr PropertyQuery kMessageIdentities{
    "SELECT id, entry_id FROM messages WHERE folder = ?1 AND id > ?2 ORDER BY id LIMIT ?3",
    kIdentity};
constexpr PropertyQuery kRecipients{
    "SELECT position, display_name, address, 1 FROM message_recipients"
    " WHERE message = ?1 AND position > ?2 ORDER BY position LIMIT ?3",
    kRecipient};
static_assert(MAPI_TO == 1, "the type that the query names");

class Table final : public UnknownObject<IMAPITable> {
 public:
  Table(MessageSessionPtr session, const TableKind& kind, std::int64_t owner)
      : session_(std::move(session)), kind_(kind), owner_(owner) {}

  HRESULT SetColumns(const SPropTagArray* tags, DWORD) override {
    return Guarded("IMAPITable::SetColumns", [&] {
      if (!tags || !tags->aulPropTag || tags->cValues == 0) return E_INVALIDARG;
      columns_.assign(tags->aulPropTag, tags->aulPropTag + tags->cValues);
      return S_OK;
    });
  }

  HRESULT GetRowCount(DWORD, DWORD* count) override {
    if (!count) return E_POINTER;
    *count = 0;
    return Guarded("IMAPITable::GetRowCount", [&]() -> HRESULT {
      Store* store = nullptr;
      RETURN_IF_FAILED(session_->Reading(store));
      std::int64_t rows = 0;
      const HRESULT status = CountRows(*store, kind_, owner_, rows);
      *count = static_cast<DWORD>(std::min<std::int64_t>(rows, kMostRows));
      return status;
    });
  }

  HRESULT QueryRows(LONG count, DWORD, SRowSet** rows) override {
    if (!rows) return E_POINTER;
    *rows = nullptr;
    return Guarded("IMAPITable::QueryRows", [&]() -> HRESULT {
      if (count < 1) return E_INVALIDARG;
      Store* store = nullptr;
      RETURN_IF_FAILED(session_->Reading(store));
      return Read(*store, count, rows);
    });
  }

 private:
  ~Table() override { session_->LetGoOf(scan_); }

  HRESULT Read(Store& store, LONG count, SRowSet** rows);
  SRow ReadRow(const Statement& row, const PropertyQuery& query, MapiBuffer& buffer) const;

  const MessageSessionPtr session_;
  const TableKind& kind_;
  const std::int64_t owner_;
  std::int64_t position_ = -1;  // the number of the last row that was read
  RowScan scan_;                // for rows that are read one by one
  std::int64_t scanned_ = -1;   // where it stands
  std::vector<DWORD> columns_;  // empty for the default ones
};

HRESULT Table::Read(Store& store, LONG count, SRowSet** rows) {
  constexpr LONG kNoLimit = -1;
  const bool isSingle = count == 1;
  const PropertyQuery& query = !isSingle && columns_.empty() ? kind_.severalRows : kind_.rows;
  session_->LetGoOf(scan_);
  if (!isSingle || scanned_ != position_ || !scan_.GoesOn(store)) {
    RETURN_IF_FAILED(scan_.Begin(store, query.sql, owner_, position_, isSingle ? kNoLimit : count));
  }

  MapiBuffer buffer;
  auto* const set = buffer.Allocate<SRowSet>();
  std::vector<SRow> read;
  std::int64_t position = position_;
  for (bool row = true; row && read.size() < static_cast<std::size_t>(count);) {
    RETURN_IF_FAILED(scan_.Next("sqlite3_step:list", row));
    if (!row) break;
    scanned_ = scan_.row().Integer(0);
    read.push_back(ReadRow(scan_.row(), query, buffer));
    position = scanned_;
  }
  if (!isSingle) scan_.End();
  scan_.EndWithoutSnapshot();
  if (&kind_ == &kContentsTable) session_->PutAtHand({&scan_, scanned_, owner_});
  set->cRows = static_cast<DWORD>(read.size());
  set->aRow = buffer.Allocate<SRow>(read.size());
  std::copy(read.begin(), read.end(), set->aRow);
  position_ = position;
  buffer.HandOut();
  *rows = set;
  return S_OK;
}

SRow Table::ReadRow(const Statement& row, const PropertyQuery& query, MapiBuffer& buffer) const {
  SRow result{};
  const auto usual = query.tags.first(query.usual);
  if (columns_.empty()) {
    result.lpProps = buffer.Allocate<SPropValue>(usual.size());
    result.cValues = PresentProperties(row, usual, buffer, result.lpProps);
  } else {
    result.lpProps = buffer.Allocate<SPropValue>(columns_.size());
    result.cValues = static_cast<DWORD>(columns_.size());
    WantedProperties(row, usual, columns_, buffer, result.lpProps);
  }
  return result;
}

}  // namespace

const TableKind kStoresTable{kStores, kStores,
                             "SELECT count(*) FROM message_stores WHERE ?1 IS NOT NULL"};
const TableKind kHierarchyTable{kFolders, kFolders,
                                "SELECT count(*) FROM message_folders WHERE parent = ?1"};
const TableKind kContentsTable{kMessages, kMessageIdentities,
                               "SELECT count(*) FROM messages WHERE folder = ?1"};
const TableKind kRecipientTable{kRecipients, kRecipients,
                                "SELECT count(*) FROM message_recipients WHERE message = ?1"};

const std::span<const DWORD> kMessageTags = kMessage;

IMAPITable* MakeTable(const MessageSessionPtr& session, const TableKind& kind, std::int64_t owner) {
  return new Table(session, kind, owner);
}

HRESULT CountRows(Store& store, const TableKind& kind, std::int64_t owner, std::int64_t& count) {
  Statement select;
  bool row = false;
  RETURN_IF_FAILED(store.Find(kind.countSql, "sqlite3_step:read", select, row, owner));
  if (row) count = select.Integer(0);
  return S_OK;
}

}  // namespace ce::host
