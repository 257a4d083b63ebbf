// The handheld's message stores, for tools that fill, show and empty them.
//
// A store (its name is an account's; "SMS" is the telephone's) has a tree of folders, a folder has
// messages. Stores, folders and messages are known by a number that is never given away again, and
// to MAPI by their entry identifier. Whoever downloads or deletes messages meanwhile does so over a
// connection of its own.
#pragma once

#include <array>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "handheld/store/columns.h"
#include "handheld/store/store_writer.h"

namespace ce::host {

// The name of the store that the agent exports.
inline constexpr char16_t kSmsStoreName[] = u"SMS";

using EntryIdBytes = std::vector<BYTE>;

struct MessageStoreInfo {
  std::int64_t id = 0;
  std::u16string name;
};

struct MessageFolderInfo {
  std::int64_t id = 0;
  std::int64_t parent = 0;  // 0 for the top of the tree
  std::u16string name;
  std::u16string path;  // "/Inbox/Old"; "/" for the top of the tree
};

// The folders that a store names for what they are. Nothing where it names none.
struct SpecialFolders {
  std::optional<EntryIdBytes> subtree;      // the top of the tree
  std::optional<EntryIdBytes> drafts;       // not exported when it is right below the top
  std::optional<EntryIdBytes> wastebasket;  // likewise
};

struct StoredRecipient {
  std::optional<std::u16string> name;
  std::optional<std::u16string> address;
  friend bool operator==(const StoredRecipient&, const StoredRecipient&) = default;
};

// A property without a value is one that the message lacks.
struct StoredMessage {
  // To insert: empty bytes (as here) have an identifier made; given ones, of any length, are kept.
  std::optional<EntryIdBytes> entryId = EntryIdBytes{};
  std::optional<std::u16string> messageClass;  // "IPM.SMStext"; a multimedia one's begins "IPM.MMS"
  std::optional<std::int64_t> deliveryTime;    // file time: ticks since 1601, UTC
  std::optional<LONG> flags;                   // MSGFLAG_...; MSGFLAG_FROMME for a sent one
  std::optional<LONG> status;
  std::optional<std::u16string> subject;  // the whole text of a text message
  std::optional<std::u16string> senderName;
  std::optional<std::u16string> senderAddress;
  std::optional<LONG> size;
  std::optional<std::int64_t> lastModificationTime;
  std::vector<StoredRecipient> recipients;
  friend bool operator==(const StoredMessage&, const StoredMessage&) = default;
};

struct NumberedMessage {
  std::int64_t id = 0;
  StoredMessage message;
};

inline constexpr Column<StoredMessage> kMessageColumns[] = {
    {"entry_id", &StoredMessage::entryId},
    {"message_class", &StoredMessage::messageClass},
    {"delivery_time", &StoredMessage::deliveryTime},
    {"flags", &StoredMessage::flags},
    {"status", &StoredMessage::status},
    {"subject", &StoredMessage::subject},
    {"sender_name", &StoredMessage::senderName},
    {"sender_address", &StoredMessage::senderAddress},
    {"size", &StoredMessage::size},
    {"last_modification_time", &StoredMessage::lastModificationTime},
};
inline constexpr Column<StoredRecipient> kRecipientColumns[] = {
    {"display_name", &StoredRecipient::name},
    {"address", &StoredRecipient::address},
};

using EntryId = std::array<BYTE, 20>;
// The entry identifiers that the handheld makes: four zero bytes, then most significant byte first
// the object's type (MAPI_STORE, MAPI_FOLDER, MAPI_MESSAGE; four bytes), its store's number (four)
// and its own (eight). So identifiers made one after another lie beside each other in the store's
// index.
EntryId MakeEntryId(DWORD objectType, std::int64_t store, std::int64_t id);

// Folders below the top of their tree. A path of more is refused.
inline constexpr int kDeepestFolder = 64;
// kStoreDamaged for a folder that lies deeper, or below itself: whoever walked on from there might
// never come to an end.
[[nodiscard]] HRESULT CheckFolderDepth(Store& store, std::int64_t folder);

class MessageStores final : public StoreWriter {
 public:
  explicit MessageStores(std::unique_ptr<Store> store) : StoreWriter(std::move(store)) {}

  // In the order of their making.
  [[nodiscard]] HRESULT ListStores(std::vector<MessageStoreInfo>& stores);
  // Nothing when there is no store of this name.
  [[nodiscard]] HRESULT FindStore(std::u16string_view name, std::optional<std::int64_t>& store);
  // With the folders Inbox, Outbox, Sent Items, Drafts and Deleted Items. E_INVALIDARG for a name
  // that is empty or taken.
  [[nodiscard]] HRESULT CreateStore(std::u16string_view name, std::int64_t& store);
  // With all that is in it.
  [[nodiscard]] HRESULT DeleteStore(std::int64_t store);
  [[nodiscard]] HRESULT GetSpecialFolders(std::int64_t store, SpecialFolders& folders);
  [[nodiscard]] HRESULT SetSpecialFolders(std::int64_t store, const SpecialFolders& folders);

  // Parents before their children, the top of the tree first. kStoreDamaged where a folder lies
  // below itself or too deep.
  [[nodiscard]] HRESULT ListFolders(std::int64_t store, std::vector<MessageFolderInfo>& folders);
  // The folder of this path ("/Inbox/Old"), made with those above it as far as they do not exist.
  // Names are told apart by case and may not be empty or hold zeros. E_INVALIDARG also for a path
  // of more than kDeepestFolder names.
  [[nodiscard]] HRESULT EnsureFolder(std::int64_t store, std::u16string_view path,
                                     std::int64_t& folder);
  [[nodiscard]] HRESULT FolderEntryId(std::int64_t folder, EntryIdBytes& entryId);
  // With all that is in it. The top of a tree goes with its store only.
  [[nodiscard]] HRESULT DeleteFolder(std::int64_t folder);

  // E_INVALIDARG when the handheld has a message of this entry identifier already.
  [[nodiscard]] HRESULT Insert(std::int64_t folder, const StoredMessage& message,
                               std::int64_t* id = nullptr);
  // Nothing when no message has this entry identifier.
  [[nodiscard]] HRESULT FindMessage(const EntryIdBytes& entryId, std::optional<std::int64_t>& id);
  // The folder's own messages, in the order in which they were inserted, at most `limit`, from
  // behind message `after` on (0 for the first). To read a folder of any size call it with the last
  // message's number until it answers none.
  [[nodiscard]] HRESULT Read(std::int64_t folder, std::int64_t after, std::size_t limit,
                             std::vector<NumberedMessage>& messages);
  [[nodiscard]] HRESULT Count(std::int64_t folder, std::int64_t& count);
  // `found` false, and success, when there is no such message.
  [[nodiscard]] HRESULT Delete(std::int64_t message, bool& found);
  // The folder's own messages; its subfolders keep theirs.
  [[nodiscard]] HRESULT Clear(std::int64_t folder);

 private:
  static constexpr char kStep[] = "sqlite3_step:messages";

  HRESULT TakeId(std::int64_t& id);
  HRESULT RequireRow(const char* sql, std::int64_t id, std::int64_t* value);
  // E_INVALIDARG when the statement changes no row.
  template <typename... Values>
  HRESULT ChangeRow(const char* sql, const Values&... values) {
    bool changed = false;
    RETURN_IF_FAILED(store().Change(sql, kStep, changed, values...));
    return changed ? S_OK : E_INVALIDARG;
  }
  HRESULT StoreSpecialFolders(std::int64_t store, const SpecialFolders& folders);
  HRESULT InsertFolder(std::int64_t store, std::optional<std::int64_t> parent,
                       std::u16string_view name, EntryIdBytes& entryId, std::int64_t& folder);
  HRESULT FindChild(std::int64_t parent, std::u16string_view name, std::int64_t& folder,
                    bool& found);
  HRESULT FindFolder(std::int64_t store, const std::vector<std::u16string_view>& names,
                     std::int64_t& folder, bool& found);
  HRESULT FindOrInsertFolder(std::int64_t store, const std::vector<std::u16string_view>& names,
                             std::int64_t& folder);
  HRESULT InsertMessage(std::int64_t folder, const StoredMessage& message, std::int64_t& id);
  HRESULT InsertRecipients(std::int64_t message, const std::vector<StoredRecipient>& recipients);
  HRESULT ReadRecipients(std::int64_t message, std::vector<StoredRecipient>& recipients);
};

}  // namespace ce::host
