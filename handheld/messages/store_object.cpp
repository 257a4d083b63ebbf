#include <utility>

#include "handheld/base/com_object.h"
#include "handheld/base/guarded.h"
#include "handheld/messages/objects.h"
#include "handheld/messages/properties.h"
#include "platform/com_ptr.h"

namespace ce::host {
namespace {

constexpr DWORD kTags[] = {PR_ENTRYID, PR_DISPLAY_NAME_W, PR_IPM_SUBTREE_ENTRYID,
                           PR_CE_IPM_DRAFTS_ENTRYID, PR_IPM_WASTEBASKET_ENTRYID};
constexpr PropertyQuery kProperties{
    "SELECT id, entry_id, display_name, subtree_entry_id, drafts_entry_id, wastebasket_entry_id"
    " FROM message_stores WHERE id = ?1",
    kTags};

constexpr char kFindMessage[] =
    "SELECT messages.id FROM messages JOIN message_folders ON message_folders.id = messages.folder"
    " WHERE messages.entry_id = ?1 AND message_folders.store = ?2";
constexpr char kFindFolder[] = "SELECT id FROM message_folders WHERE entry_id = ?1 AND store = ?2";

class MsgStore final : public UnknownObject<IMsgStore, IMAPIProp> {
 public:
  MsgStore(MessageSessionPtr session, std::int64_t id) : session_(std::move(session)), id_(id) {}

  HRESULT GetProps(const SPropTagArray* tags, DWORD, DWORD* count, SPropValue** values) override {
    return GetObjectProps("IMsgStore::GetProps", *session_, kProperties, id_, tags, count, values);
  }

  HRESULT OpenEntry(DWORD entryIdBytes, const ENTRYID* entryId, const GUID* interfaceId, DWORD,
                    DWORD* objectType, IUnknown** object) override {
    if (!object) return E_POINTER;
    *object = nullptr;
    return Guarded("IMsgStore::OpenEntry", [&] {
      Store* store = nullptr;
      if (const HRESULT status = session_->Reading(store); Failed(status)) return status;
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
      made.attach(MakeMessageObject(session_, id));
    } else {
      made.attach(MakeFolderObject(session_, id));
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

IMsgStore* MakeMsgStore(const MessageSessionPtr& session, std::int64_t store) {
  return new MsgStore(session, store);
}

}  // namespace ce::host
