// A connection to Pocket Outlook, and its items.
#pragma once

#include "platform/com_ptr.h"
#include "platform/pocket_outlook.h"

namespace corvane {

// The item's interface of this kind, null when it has none.
inline ce::ComPtr<ce::IUnknown> ItemAs(ce::IUnknown* item, const ce::GUID& kind) {
  ce::ComPtr<ce::IUnknown> typed;
  if (!item || ce::Failed(item->QueryInterface(kind, typed.put_void()))) typed.reset();
  return typed;
}

// What is done alike with items of every kind.
template <typename Item>
ce::HRESULT DeleteItem(ce::IUnknown* item) {
  return static_cast<Item*>(item)->Delete();
}
template <typename Item>
ce::HRESULT GetItemOid(ce::IUnknown* item, ce::LONG* oid) {
  return static_cast<Item*>(item)->get_Oid(oid);
}

// Logged off when it goes.
class OutlookSession {
 public:
  OutlookSession() = default;
  OutlookSession(const OutlookSession&) = delete;
  OutlookSession& operator=(const OutlookSession&) = delete;
  ~OutlookSession() {
    if (app_) static_cast<void>(app_->Logoff());
  }

  // Create must have succeeded before anything else is asked.
  [[nodiscard]] ce::HRESULT Create() {
    return ce::CoCreateInstance(ce::CLSID_Application, nullptr, ce::CLSCTX_INPROC_SERVER,
                                ce::IPOutlookTransactions::kIid, app_.put_void());
  }
  [[nodiscard]] ce::HRESULT Logon() { return app_->Logon(0); }
  ce::IPOutlookTransactions* app() const { return app_.get(); }

 private:
  ce::ComPtr<ce::IPOutlookTransactions> app_;
};

}  // namespace corvane
