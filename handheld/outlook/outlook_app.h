// The application object's way in for the handheld's own tools.
#pragma once

#include "handheld/outlook/session.h"
#include "platform/pocket_outlook.h"

namespace ce::host {

struct IHostOutlookApp : IPOutlookApp {
  static constexpr GUID kIid{
      0x05F6F1F0, 0x6C4D, 0x4C1B, {0x9A, 0x2D, 0x1E, 0x1F, 0x6B, 0x84, 0x53, 0x11}};
  // Null when not logged on.
  virtual SessionPtr HostSession() = 0;

 protected:
  ~IHostOutlookApp() = default;
};

// The open session of an application object that CreateOutlookApp made; E_FAIL and null when it is
// not logged on.
[[nodiscard]] HRESULT SessionOf(IPOutlookApp* app, SessionPtr& session);

}  // namespace ce::host
