#include "handheld/messages/table.h"

namespace ce::host {
namespace {

constexpr DWORD kNamed[] = {PR_DISPLAY_NAME_W, PR_ENTRYID};
constexpr DWORD kMessage[] = {PR_ENTRYID,       PR_MESSAGE_CLASS_W, PR_MESSAGE_DELIVERY_TIME,
                              PR_MESSAGE_FLAGS, PR_MSG_STATUS,      PR_SUBJECT_W,
                              PR_SENDER_NAME_W, PR_MESSAGE_SIZE,    PR_LAST_MODIFICATION_TIME};
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
    " last_modification_time FROM messages WHERE folder = ?1 AND id > ?2 ORDER BY id LIMIT ?3",
    kMessage};
constexpr PropertyQuery kMessageIdentities{
    "SELECT id, entry_id FROM messages WHERE folder = ?1 AND id > ?2 ORDER BY id LIMIT ?3",
    kIdentity};
constexpr PropertyQuery kRecipients{
    "SELECT position, display_name, address, 1 FROM message_recipients"
    " WHERE message = ?1 AND position > ?2 ORDER BY position LIMIT ?3",
    kRecipient};
static_assert(MAPI_TO == 1, "the type that the query names");

}  // namespace

const TableKind kStoresTable{kStores, kStores,
                             "SELECT count(*) FROM message_stores WHERE ?1 IS NOT NULL"};
const TableKind kHierarchyTable{kFolders, kFolders,
                                "SELECT count(*) FROM message_folders WHERE parent = ?1"};
const TableKind kContentsTable{kMessages, kMessageIdentities,
                               "SELECT count(*) FROM messages WHERE folder = ?1"};
const TableKind kRecipientTable{kRecipients, kRecipients,
                                "SELECT count(*) FROM message_recipients WHERE message = ?1"};

}  // namespace ce::host
