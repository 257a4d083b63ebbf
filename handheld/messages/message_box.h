// The handheld's message stores, for tools that fill, show and empty them.
//
// A store (its name is an account's; "SMS" is the telephone's) has a tree of folders, a folder has
// messages. Stores, folders and messages are known by a number that is never given away again, and
// to MAPI by their entry identifier. Whoever downloads or deletes messages meanwhile does so over a
// connection of its own.
//
// Calls answer the statuses of outlook/store_error.h, E_INVALIDARG for what is named, or for a
// number that names nothing, and E_OUTOFMEMORY; nothing throws. A call that fails has changed
// nothing, and its results are undefined. One thread.
#pragma once

#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "handheld/directory/handheld.h"
#include "handheld/store/store.h"
#include "platform/types.h"

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

class MessageBox {
 public:
  // Folders below the top.
  static constexpr std::size_t kDeepestFolder = 64;

  // Makes the handheld's store, or brings it up to date, first. On failure `problem` says what is
  // wrong, worded for the handheld's owner.
  [[nodiscard]] static HRESULT Open(Handheld& handheld, std::unique_ptr<MessageBox>& box,
                                    std::string& problem);
  // What is pending in an open batch is undone.
  ~MessageBox();
  MessageBox(const MessageBox&) = delete;
  MessageBox& operator=(const MessageBox&) = delete;

  // Between Begin and Commit every change joins one transaction: success of a single call means
  // "accepted", and all of it is on the disk when Commit has succeeded. Once a call of a batch has
  // failed for want of disk or memory the whole batch is undone, and Commit answers that failure.
  // Outside a batch each successful change is on the disk on return. While a batch has changes
  // pending, others wait to write.
  void Begin();
  [[nodiscard]] HRESULT Commit();
  void Abandon();

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

  // Parents before their children, the top of the tree first.
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
  class Batch final : public WriteGroup {
   public:
    Batch();
  };

  explicit MessageBox(std::unique_ptr<Store> store) : store_(std::move(store)) {}

  // The frame of every call, and of every call that writes.
  template <typename Work>
  HRESULT Call(const char* call, Work&& work);
  template <typename Work>
  HRESULT Change(const char* call, Work&& work);

  HRESULT TakeId(std::int64_t& id);
  HRESULT RequireRow(const char* sql, std::int64_t id, std::int64_t* value);
  HRESULT StoreSpecialFolders(std::int64_t store, const SpecialFolders& folders);
  HRESULT InsertFolder(std::int64_t store, std::optional<std::int64_t> parent,
                       std::u16string_view name, EntryIdBytes& entryId, std::int64_t& folder);
  HRESULT FindChild(std::int64_t parent, std::u16string_view name, std::int64_t& folder,
                    bool& found);
  HRESULT FindFolder(std::int64_t store, const std::vector<std::u16string_view>& names,
                     std::int64_t& folder, bool& found);
  HRESULT FindOrInsertFolder(std::int64_t store, const std::vector<std::u16string_view>& names,
                             std::int64_t& folder);
  HRESULT EntryIsTaken(const EntryIdBytes& entryId, bool& taken);
  HRESULT InsertMessage(std::int64_t folder, const StoredMessage& message, std::int64_t& id);
  HRESULT InsertRecipients(std::int64_t message, const std::vector<StoredRecipient>& recipients);
  HRESULT ReadRecipients(std::int64_t message, std::vector<StoredRecipient>& recipients);

  // Above the store, which rolls it back when it goes.
  Batch batch_;
  const std::unique_ptr<Store> store_;
  HRESULT batchStatus_ = S_OK;
};

}  // namespace ce::host
