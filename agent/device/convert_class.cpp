#include "agent/device/convert_class.h"

#include "platform/status.h"
#include "platform/windows.h"

namespace corvane {

ce::HRESULT RegisterConvertClass() {
  ce::WNDCLASSW windowClass;
  windowClass.style = ce::CS_HREDRAW | ce::CS_VREDRAW;
  windowClass.lpfnWndProc = ce::DefWindowProcW;
  windowClass.hInstance = ce::GetModuleHandleW(nullptr);
  windowClass.hbrBackground = ce::GetStockObject(ce::WHITE_BRUSH);
  windowClass.lpszClassName = kConvertClass;
  if (ce::RegisterClassW(&windowClass) != 0) return ce::S_OK;
  return ce::LastErrorStatus();
}

ce::HRESULT UnregisterConvertClass() {
  if (ce::UnregisterClassW(kConvertClass, ce::GetModuleHandleW(nullptr))) return ce::S_OK;
  return ce::LastErrorStatus();
}

}  // namespace corvane
