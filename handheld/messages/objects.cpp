#include "handheld/messages/objects.h"

#include <utility>

#include "handheld/base/com_object.h"
#include "handheld/base/guarded.h"
#include "handheld/messages/properties.h"
#include "handheld/messages/table.h"
#include "handheld/store/message_stores.h"
#include "platform/com_ptr.h"

namespace ce::host {
namespace {

// What every GetProps does around its query: the frame, the arguments, the session.
HRESULT GetObjectProps(const char* call, MessageSession& session, const PropertyQuery& query,
                       std::int64_t id, const SPropTagArray* tags, DWORD* count,
                       SPropValue** values) {
  if (!count || !values) return E_POINTER;
  *count = 0;
  *values = nullptr;
  return Guarded(call, [&]() -> HRESULT {
    if (!tags || !tags->aulPropTag || tags->cValues == 0) return E_INVALIDARG;
    Store* store = nullptr;
    RETURN_IF_FAILED(session.Reading(store));
    return ReadProperties(*store, query, id, *tags, count, values);
  });
}

constexpr DWORD kMessageTags[] = {PR_ENTRYID,
                                  PR_MESSAGE_CLASS_W,
                                  PR_MESSAGE_DELIVERY_TIME,
                                  PR_MESSAGE_FLAGS,
                                  PR_MSG_STATUS,
                                  PR_SUBJECT_W,
                                  PR_SENDER_NAME_W,
                                  PR_SENDER_EMAIL_ADDRESS_W,
                                  PR_MESSAGE_SIZE,
                                  PR_LAST_MODIFICATION_TIME};
constexpr PropertyQuery kMessageProperties{
    "SELECT id, entry_id, message_class, delivery_time, flags, status, subject, sender_name,"
    " sender_address, size, last_modification_time FROM messages WHERE id = ?1",
    kMessageTags};

class Message final : public UnknownObject<IMessage, IMAPIProp> {
 public:
  Message(MessageSessionPtr session, std::int64_t id) : session_(std::move(session)), id_(id) {}

  HRESULT GetProps(const SPropTagArray* tags, DWORD, DWORD* count, SPropValue** values) override {
    return GetObjectProps("IMessage::GetProps", *session_, kMessageProperties, id_, tags, count,
                          values);
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
      HRESULT status = FindEntry(*store, kFindMessage, entryId, entryIdBytes, id_, found);
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
