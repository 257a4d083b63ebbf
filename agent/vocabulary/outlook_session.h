// A connection to Pocket Outlook that is logged off when it goes.
#pragma once

#include "platform/com_ptr.h"
#include "platform/pocket_outlook.h"

namespace corvane {

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
                                ce::IPOutlookApp::kIid, app_.put_void());
  }
  [[nodiscard]] ce::HRESULT Logon() { return app_->Logon(0); }
  ce::IPOutlookApp* app() const { return app_.get(); }

 private:
  ce::ComPtr<ce::IPOutlookApp> app_;
};

}  // namespace corvane
