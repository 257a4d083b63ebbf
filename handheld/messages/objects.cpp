#include "handheld/messages/objects.h"

#include <algorithm>
#include <utility>

#include "handheld/base/com_object.h"
#include "handheld/base/guarded.h"
#include "handheld/messages/properties.h"
#include "handheld/messages/table.h"
#include "handheld/store/message_stores.h"
#include "platform/com_ptr.h"

namespace ce::host {
namespace {

// What every GetProps does around its query, which `read` makes: the frame, the arguments, the
// session.
template <typename Read>
HRESULT GetObjectProps(const char* call, MessageSession& session, const SPropTagArray* tags,
                       DWORD* count, SPropValue** values, Read read) {
  if (!count || !values) return E_POINTER;
  *count = 0;
  *values = nullptr;
  return Guarded(call, [&]() -> HRESULT {
    if (!tags || !tags->aulPropTag || tags->cValues == 0) return E_INVALIDARG;
    Store* store = nullptr;
    RETURN_IF_FAILED(session.Reading(store));
    return read(*store);
  });
}

HRESULT GetObjectProps(const char* call, MessageSession& session, const PropertyQuery& query,
                       std::int64_t id, const SPropTagArray* tags, DWORD* count,
                       SPropValue** values) {
  return GetObjectProps(call, session, tags, count, values, [&](Store& store) {
    return ReadProperties(store, query, id, *tags, count, values);
  });
}

constexpr char kReadMessage[] =
    "SELECT id, entry_id, message_class, delivery_time, flags, status, subject, sender_name, size,"
    " last_modification_time, sender_address FROM messages WHERE id = ?1";

class Message final : public UnknownObject<IMessage, IMAPIProp> {
 public:
  Message(MessageSessionPtr session, std::int64_t id) : session_(std::move(session)), id_(id) {}

  HRESULT GetProps(const SPropTagArray* tags, DWORD, DWORD* count, SPropValue** values) override {
    const auto read = [&](Store& store) {
      if (const auto* message = session_->AtHand(); message && message->id == id_) {
        return ReadProperties(message->rows->row(), kMessageTags, *tags, count, values);
      }
      return ReadProperties(store, {kReadMessage, kMessageTags}, id_, *tags, count, values);
    };
    return GetObjectProps("IMessage::GetProps", *session_, tags, count, values, read);
  }

  HRESULT GetRecipientTable(DWORD, IMAPITable** table) override {
    if (!table) return E_POINTER;
    *table = nullptr;
    return Guarded("IMessage::GetRecipientTable", [&]() -> HRESULT {
      Store* store = nullptr;
      RETURN_IF_FAILED(session_->Reading(store));
      std::int64_t count = 0;
      RETURN_IF_FAILED(CountRows(*store, kRecipientTable, id_, count));
      if (count == 0) return MAPI_E_NO_RECIPIENTS;
      *table = MakeTable(session_, kRecipientTable, id_);
      return S_OK;
    });
  }

 private:
  ~Message() override = default;

  const MessageSessionPtr session_;
  const std::int64_t id_;
};

constexpr DWORD kFolderTags[] = {PR_ENTRYID, PR_DISPLAY_NAME_W};
constexpr PropertyQuery kFolderProperties{
    "SELECT id, entry_id, display_name FROM message_folders WHERE id = ?1", kFolderTags};

class Folder final : public UnknownObject<IMAPIFolder, IMAPIContainer, IMAPIProp> {
 public:
  Folder(MessageSessionPtr session, std::int64_t id) : session_(std::move(session)), id_(id) {}

  HRESULT GetProps(const SPropTagArray* tags, DWORD, DWORD* count, SPropValue** values) override {
    return GetObjectProps("IMAPIFolder::GetProps", *session_, kFolderProperties, id_, tags, count,
                          values);
  }

  HRESULT GetContentsTable(DWORD, IMAPITable** table) override {
    return GetTable("IMAPIFolder::GetContentsTable", kContentsTable, table);
  }
  HRESULT GetHierarchyTable(DWORD, IMAPITable** table) override {
    return GetTable("IMAPIFolder::GetHierarchyTable", kHierarchyTable, table);
  }

  HRESULT DeleteMessages(const ENTRYLIST* messages, DWORD, IUnknown*, DWORD) override {
    return Guarded("IMAPIFolder::DeleteMessages", [&]() -> HRESULT {
      if (!messages || (messages->cValues > 0 && !messages->lpbin)) return E_INVALIDARG;
      HRESULT result = S_OK;
      for (DWORD i = 0; i < messages->cValues; ++i) {
        const SBinary& entry = messages->lpbin[i];
        bool found = false;
        RETURN_IF_FAILED(session_->Delete(id_, entry.lpb, entry.cb, found));
        if (!found) result = MAPI_W_PARTIAL_COMPLETION;
      }
      return result;
    });
  }

 private:
  ~Folder() override = default;

  HRESULT GetTable(const char* call, const TableKind& kind, IMAPITable** table) {
    if (!table) return E_POINTER;
    *table = nullptr;
    return Guarded(call, [&]() -> HRESULT {
      Store* store = nullptr;
      RETURN_IF_FAILED(session_->Reading(store));
      if (&kind == &kHierarchyTable) RETURN_IF_FAILED(CheckFolderDepth(*store, id_));
      *table = MakeTable(session_, kind, id_);
      return S_OK;
    });
  }

  const MessageSessionPtr session_;
  const std::int64_t id_;
};

constexpr DWORD kStoreTags[] = {PR_ENTRYID, PR_DISPLAY_NAME_W, PR_IPM_SUBTREE_ENTRYID,
                                PR_CE_IPM_DRAFTS_ENTRYID, PR_IPM_WASTEBASKET_ENTRYID};
constexpr PropertyQuery kStoreProperties{
    "SELECT id, entry_id, display_name, subtree_entry_id, drafts_entry_id, wastebasket_entry_id"
    " FROM message_stores WHERE id = ?1",
    kStoreTags};

constexpr char kFindMessage[] =
    "SELECT messages.id FROM messages JOIN message_folders ON message_folders.id = messages.folder"
    " WHERE messages.entry_id = ?1 AND message_folders.store = ?2";
constexpr char kFindFolder[] = "SELECT id FROM message_folders WHERE entry_id = ?1 AND store = ?2";

class MsgStore final : public UnknownObject<IMsgStore, IMAPIProp> {
 public:
  MsgStore(MessageSessionPtr session, std::int64_t id) : session_(std::move(session)), id_(id) {}

  HRESULT GetProps(const SPropTagArray* tags, DWORD, DWORD* count, SPropValue** values) override {
    return GetObjectProps("IMsgStore::GetProps", *session_, kStoreProperties, id_, tags, count,
                          values);
  }

  HRESULT OpenEntry(DWORD entryIdBytes, const ENTRYID* entryId, const GUID* interfaceId, DWORD,
                    DWORD* objectType, IUnknown** object) override {
    if (!object) return E_POINTER;
    *object = nullptr;
    return Guarded("IMsgStore::OpenEntry", [&]() -> HRESULT {
      Store* store = nullptr;
      RETURN_IF_FAILED(session_->Reading(store));
      DWORD type = MAPI_MESSAGE;
      std::int64_t found = 0;
      HRESULT status = FindMessage(*store, entryId, entryIdBytes, found);
      if (status == MAPI_E_NOT_FOUND) {
        type = MAPI_FOLDER;
        status = FindEntry(*store, kFindFolder, entryId, entryIdBytes, id_, found);
      }
      if (Succeeded(status)) status = Make(type, found, interfaceId, object);
      if (Succeeded(status) && objectType) *objectType = type;
      return status;
    });
  }

 private:
  ~MsgStore() override = default;

  HRESULT FindMessage(Store& store, const ENTRYID* entryId, DWORD bytes, std::int64_t& found) {
    bool atHand = false;
    RETURN_IF_FAILED(IsAtHand(store, entryId, bytes, atHand));
    if (!atHand) return FindEntry(store, kFindMessage, entryId, bytes, id_, found);
    found = session_->AtHand()->id;
    return S_OK;
  }
  // Whether the message at hand has this identifier, and is one of this store.
  HRESULT IsAtHand(Store& store, const ENTRYID* entryId, DWORD bytes, bool& atHand) {
    static constexpr char kIsOwn[] = "SELECT 1 FROM message_folders WHERE id = ?1 AND store = ?2";
    atHand = false;
    const auto* message = session_->AtHand();
    if (!message || !entryId || bytes == 0) return S_OK;
    const auto [id, size] = message->rows->row().Blob(1);
    if (size != bytes || !std::equal(id, id + size, entryId)) return S_OK;
    if (ownFolder_ != message->folder) {
      Statement find;
      bool isOwn = false;
      RETURN_IF_FAILED(store.Find(kIsOwn, "sqlite3_step:read", find, isOwn, message->folder, id_));
      if (!isOwn) return S_OK;
      ownFolder_ = message->folder;
    }
    atHand = true;
    return S_OK;
  }

  HRESULT Make(DWORD type, std::int64_t id, const GUID* interfaceId, IUnknown** object) {
    ComPtr<IUnknown> made;
    if (type == MAPI_MESSAGE) {
      made.attach(new Message(session_, id));
    } else {
      made.attach(new Folder(session_, id));
    }
    if (interfaceId) {
      return made->QueryInterface(*interfaceId, reinterpret_cast<void**>(object));
    }
    *object = made.detach();
    return S_OK;
  }

  const MessageSessionPtr session_;
  const std::int64_t id_;
  std::int64_t ownFolder_ = 0;  // one of its folders, that of the last message
};

}  // namespace

HRESULT FindEntry(Store& store, const char* sql, const ENTRYID* entryId, DWORD entryIdBytes,
                  std::int64_t owner, std::int64_t& id) {
  if (!entryId || entryIdBytes == 0) return MAPI_E_INVALID_ENTRYID;
  Statement find;
  RETURN_IF_FAILED(store.Prepare(sql, find));
  find.BindBlob(1, entryId, entryIdBytes);
  find.Bind(2, owner);
  bool row = false;
  RETURN_IF_FAILED(find.Step("sqlite3_step:read", row));
  if (!row) return MAPI_E_NOT_FOUND;
  id = find.Integer(0);
  return S_OK;
}

IMsgStore* MakeMsgStore(const MessageSessionPtr& session, std::int64_t store) {
  return new MsgStore(session, store);
}

}  // namespace ce::host
