// Walks through the object model that fail at one of their calls.
#pragma once

#include <string>

#include "handheld/outlook/outlook_app.h"
#include "handheld/store/store_error.h"
#include "platform/status.h"
#include "tests/handheld/outlook/outlook_support.h"
#include "tests/support/fault_runs.h"

namespace ce::host::testing {

// What a walk answered, and how many of its writes were accepted.
struct Outcome {
  HRESULT status = S_OK;
  int accepted = 0;
};

// With which status a walk ends when this call, none for "", says that the disk is full.
inline HRESULT StatusOf(const std::string& call) {
  if (call.empty()) return S_OK;
  if (call == "GetLocalTime") return E_FAIL;
  if (call == "ReplaceFile") return kStoreWriteFault;  // the handheld's own settings
  return call.starts_with("SysAlloc") ? E_OUTOFMEMORY : kStoreDiskFull;
}

inline HRESULT Open(ComPtr<IPOutlookApp>& app) {
  RETURN_IF_FAILED(CoCreateInstance(CLSID_Application, nullptr, CLSCTX_INPROC_SERVER,
                                    IPOutlookApp::kIid, app.put_void()));
  return app->Logon(0);
}

}  // namespace ce::host::testing
