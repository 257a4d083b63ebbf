#include <utility>

#include "handheld/base/com_object.h"
#include "handheld/base/guarded.h"
#include "handheld/messages/objects.h"
#include "handheld/messages/table.h"

namespace ce::host {
namespace {

constexpr DWORD kTags[] = {PR_ENTRYID, PR_DISPLAY_NAME_W};
constexpr PropertyQuery kProperties{
    "SELECT id, entry_id, display_name FROM message_folders WHERE id = ?1", kTags};

class Folder final : public UnknownObject<IMAPIFolder, IMAPIContainer, IMAPIProp> {
 public:
  Folder(MessageSessionPtr session, std::int64_t id) : session_(std::move(session)), id_(id) {}

  HRESULT GetProps(const SPropTagArray* tags, DWORD, DWORD* count, SPropValue** values) override {
    return GetObjectProps("IMAPIFolder::GetProps", *session_, kProperties, id_, tags, count,
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
        const HRESULT status = session_->Delete(id_, entry.lpb, entry.cb, found);
        if (Failed(status)) return status;
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
    return Guarded(call, [&] {
      Store* store = nullptr;
      if (const HRESULT status = session_->Reading(store); Failed(status)) return status;
      *table = MakeTable(session_, kind, id_);
      return S_OK;
    });
  }

  const MessageSessionPtr session_;
  const std::int64_t id_;
};

}  // namespace

IMAPIFolder* MakeFolderObject(const MessageSessionPtr& session, std::int64_t folder) {
  return new Folder(session, folder);
}

}  // namespace ce::host
