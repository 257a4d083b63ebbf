#include "agent/messages/text_message_export.h"

#include <cstring>
#include <string_view>

#include "agent/core/corvane_stream.h"
#include "agent/log/log.h"
#include "agent/messages/named_rows.h"
#include "agent/messages/sms_folder.h"
#include "agent/xml/record_document.h"
#include "platform/com_ptr.h"
#include "platform/status.h"

namespace corvane {

using namespace ce;

namespace {

// One use of MAPI, ended when it goes. A step that fails leaves its last error as the status: a
// plain code, which does not stop the steps behind it.
class MapiLogon {
 public:
  MapiLogon() {
    initialized_ = MAPIInitialize(nullptr) == S_OK;
    if (!initialized_) status_ = LastErrorStatus();
    if (Failed(status_)) return;
    if (MAPILogonEx(0, nullptr, nullptr, 0, session_.put()) != S_OK) {
      status_ = LastErrorStatus();
    }
  }
  MapiLogon(const MapiLogon&) = delete;
  MapiLogon& operator=(const MapiLogon&) = delete;
  ~MapiLogon() {
    if (session_) static_cast<void>(session_->Logoff(0, 0, 0));
    session_.reset();
    if (initialized_) MAPIUninitialize();
  }

  HRESULT status() const { return status_; }
  IMAPISession* session() const { return session_.get(); }

 private:
  bool initialized_ = false;
  HRESULT status_ = S_OK;
  ComPtr<IMAPISession> session_;
};

bool IsEntry(const SBinary& entryId, const SBinary& other) {
  return other.lpb && entryId.cb == other.cb && std::memcmp(entryId.lpb, other.lpb, other.cb) == 0;
}

HRESULT ProcessTopFolders(IMsgStore* store, CorvaneStream* stream) {
  static constexpr DWORD kProperties[] = {PR_IPM_SUBTREE_ENTRYID, PR_CE_IPM_DRAFTS_ENTRYID,
                                          PR_IPM_WASTEBASKET_ENTRYID};
  static constexpr SPropTagArray kTags{3, kProperties};
  DWORD count = 0;
  PropertyValues values;
  RETURN_IF_FAILED(store->GetProps(&kTags, MAPI_UNICODE, &count, values.put()));
  if (!values.get() || count < kTags.cValues) return E_UNEXPECTED;
  const SBinary drafts = BytesOf(values.get()[1]);
  const SBinary wastebasket = BytesOf(values.get()[2]);

  ComPtr<IMAPIFolder> top;
  RETURN_IF_FAILED(OpenFolder(store, BytesOf(values.get()[0]), top.put()));
  ComPtr<IMAPITable> folders;
  RETURN_IF_FAILED(top->GetHierarchyTable(0, folders.put()));
  return ForEachNamedRow(folders.get(), [&](const NamedRow& folder) -> HRESULT {
    if (IsEntry(folder.entryId, drafts) || IsEntry(folder.entryId, wastebasket)) return S_OK;
    const FolderPath path(u"", folder.name);
    return ProcessSMSFolder(store, path.text(), folder.entryId.cb, folder.entryId.lpb, stream);
  });
}

}  // namespace

HRESULT FindSmsStore(IMAPISession* session, IMsgStore** store) {
  *store = nullptr;
  if (!session) return E_POINTER;
  ComPtr<IMAPITable> stores;
  RETURN_IF_FAILED(session->GetMsgStoresTable(0, stores.put()));
  for (;;) {
    SingleRow row;
    NamedRow found;
    bool more = false;
    RETURN_IF_FAILED(ReadNamedRow(stores.get(), &row, &found, &more));
    if (!more) return S_OK;
    LOG(u"Store name %s", found.name);
    if (found.name && std::u16string_view(found.name) == u"SMS") {
      return session->OpenMsgStore(0, found.entryId.cb, found.entryId.lpb, nullptr, 0, store);
    }
  }
}

namespace {

// Ends the download before it logs off.
HRESULT ExportInSession(CorvaneStream* stream) {
  const MapiLogon logon;
  HRESULT status = logon.status();
  ComPtr<IMsgStore> store;
  if (Succeeded(status)) status = FindSmsStore(logon.session(), store.put());
  if (!store) {
    LOG(u"Didn't find SMS Store");
    status = E_NOTIMPL;
  }
  if (Succeeded(status)) status = ProcessTopFolders(store.get(), stream);
  return EndDownload(stream, status);
}

}  // namespace

HRESULT ExportTextMessages(CorvaneStream* stream) {
  const HRESULT status = ExportInSession(stream);
  LOG(u"Exit ProcessSMSFolder");
  return status;
}

}  // namespace corvane
