#include "handheld/outlook/outlook_app.h"

#include <memory>
#include <string>
#include <utility>

#include "handheld/automation/com_classes.h"
#include "handheld/base/com_object.h"
#include "handheld/base/guarded.h"
#include "handheld/outlook/item_collection.h"
#include "platform/com_ptr.h"
#include "platform/status.h"

namespace ce::host {
namespace {

const ItemKind* const kKinds[] = {&kAppointments, &kContacts, &kTasks};

class OutlookApp final : public ComObject<IHostOutlookApp, IPOutlookTransactions, IPOutlookApp> {
 public:
  HRESULT Logon(LONG) override {
    const HRESULT status = Guarded("IPOutlookApp::Logon", [&] { return OpenSession(); });
    // Callers ask the last error why; a status that wraps a system error is that error there.
    if (Failed(status)) {
      const auto code = static_cast<DWORD>(status);
      SetLastError((code & 0xFFFF0000) == 0x80070000 ? code & 0xFFFF : code);
    }
    return status;
  }

  HRESULT Logoff() override {
    return Guarded("IPOutlookApp::Logoff", [&] {
      const SessionPtr session = std::exchange(session_, nullptr);
      return session ? session->Close() : S_FALSE;
    });
  }

  HRESULT GetDefaultFolder(INT folder, IFolder** result) override {
    if (!result) return E_POINTER;
    *result = nullptr;
    return Guarded("IPOutlookApp::GetDefaultFolder", [&] {
      if (!session_) return E_FAIL;
      for (const ItemKind* kind : kKinds) {
        if (kind->folder != folder) continue;
        *result = MakeFolder(session_, *kind);
        return S_OK;
      }
      return E_INVALIDARG;
    });
  }

  HRESULT GetItemFromOid(LONG oid, IDispatch** item) override {
    if (!item) return E_POINTER;
    *item = nullptr;
    return Guarded("IPOutlookApp::GetItemFromOid", [&] {
      if (!session_) return E_FAIL;
      for (const ItemKind* kind : kKinds) {
        const HRESULT status = kind->load(session_, nullptr, static_cast<std::uint32_t>(oid), item);
        if (status != E_INVALIDARG) return status;
      }
      return E_INVALIDARG;
    });
  }

  HRESULT BeginTransaction() override {
    return Guarded("IPOutlookApp::BeginTransaction",
                   [&] { return session_ ? session_->BeginTransaction() : E_FAIL; });
  }
  HRESULT CommitTransaction() override {
    const HRESULT status = Guarded("IPOutlookApp::CommitTransaction", [&] {
      return session_ ? session_->CommitTransaction() : E_FAIL;
    });
    if (Failed(status) && session_) session_->UndoTransaction();
    return status;
  }

  SessionPtr HostSession() override { return session_; }

 private:
  // Items and collections may outlive the application; what they have pending does not wait.
  ~OutlookApp() override {
    if (!session_ || !session_->store()) return;
    session_->UndoTransaction();
    static_cast<void>(session_->store()->CommitPending());
  }

  HRESULT OpenSession() {
    if (session_) return S_FALSE;
    Handheld* handheld = Handheld::Current();
    if (!handheld) return E_FAIL;
    std::unique_ptr<Store> store;
    std::string problem;
    const HRESULT status = Store::Open(*handheld, store, problem);
    if (Succeeded(status)) {
      session_ = std::make_shared<Session>(std::move(store), ReadItemLimits(*handheld));
    }
    return status;
  }

  SessionPtr session_;
};

}  // namespace

HRESULT SessionOf(IPOutlookApp* app, SessionPtr& session) {
  session.reset();
  if (!app) return E_POINTER;
  ComPtr<IHostOutlookApp> host;
  RETURN_IF_FAILED(app->QueryInterface(IHostOutlookApp::kIid, host.put_void()));
  session = host->HostSession();
  return session ? S_OK : E_FAIL;
}

HRESULT StoreBatch::Begin(IPOutlookApp* app) {
  RETURN_IF_FAILED(SessionOf(app, session_));
  session_->store()->SetBulk(&group_);
  return S_OK;
}

StoreBatch::~StoreBatch() {
  Store* store = session_ ? session_->store() : nullptr;
  if (!store) return;
  if (store->IsOpen(group_)) store->AbandonPending();
  store->SetBulk(nullptr);
}

HRESULT StoreBatch::Commit() {
  Store* store = session_ ? session_->store() : nullptr;
  return store ? store->CommitPending() : E_FAIL;
}

HRESULT CreateOutlookApp(const GUID& iid, void** out) {
  if (!out) return E_POINTER;
  *out = nullptr;
  return Guarded("CreateOutlookApp", [&] {
    ComPtr<OutlookApp> app;
    app.attach(new OutlookApp);
    return app->QueryInterface(iid, out);
  });
}

}  // namespace ce::host
