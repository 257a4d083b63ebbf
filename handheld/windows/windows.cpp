#include "platform/windows.h"

#include <atomic>
#include <memory>
#include <unordered_map>
#include <utility>

#include "handheld/base/guarded.h"
#include "handheld/directory/handheld.h"
#include "handheld/windows/window_class.h"

namespace ce {
namespace {

using host::Control;
using host::GuardedBool;
using host::WindowClass;

// Beyond every handle that NewHandle gives.
constexpr HWND kDesktop = 0x10;
constexpr HGDIOBJ kStockObjects = 0x20;
constexpr INT kStockCount = 20;

class Window {
 public:
  // May throw, as the control's making may.
  explicit Window(std::shared_ptr<WindowClass> windowClass)
      : class_(std::move(windowClass)), control_(class_->make ? class_->make() : nullptr) {
    ++class_->windows;
  }
  Window(const Window&) = delete;
  Window& operator=(const Window&) = delete;
  ~Window() {
    control_.reset();
    --class_->windows;
  }

  LRESULT Message(HWND self, UINT message, WPARAM wParam, LPARAM lParam) {
    return control_ ? control_->Message(message, wParam, lParam)
                    : class_->procedure(self, message, wParam, lParam);
  }

 private:
  const std::shared_ptr<WindowClass> class_;
  std::unique_ptr<Control> control_;
};

// The thread's windows; they end with it. Shared, as a window may be destroyed by a message that
// it is answering.
thread_local std::unordered_map<HWND, std::shared_ptr<Window>> t_windows;

HWND NewHandle() {
  static std::atomic<HWND> last{0x1000};
  return last += 4;
}

bool IsWindow(HWND window) {
  return window == kDesktop || t_windows.contains(window);
}

}  // namespace

HWND CreateWindowExW(DWORD, const WCHAR* className, const WCHAR*, DWORD style, INT, INT, INT, INT,
                     HWND parent, HMENU, HINSTANCE, void*) {
  HWND handle = 0;
  GuardedBool("CreateWindowExW", [&]() -> DWORD {
    std::shared_ptr<WindowClass> found = className ? host::FindWindowClass(className) : nullptr;
    if (!found) return ERROR_CANNOT_FIND_WND_CLASS;
    if (parent == 0 && (style & WS_CHILD) != 0) return ERROR_TLW_WITH_WSCHILD;
    if (parent != 0 && !IsWindow(parent)) return ERROR_INVALID_WINDOW_HANDLE;
    const HWND made = NewHandle();
    t_windows.emplace(made, std::make_shared<Window>(std::move(found)));
    handle = made;
    return ERROR_SUCCESS;
  });
  return handle;
}

BOOL DestroyWindow(HWND window) {
  return GuardedBool("DestroyWindow", [&]() -> DWORD {
    if (window == kDesktop) return ERROR_ACCESS_DENIED;
    return t_windows.erase(window) == 1 ? ERROR_SUCCESS : ERROR_INVALID_WINDOW_HANDLE;
  });
}

HWND GetForegroundWindow() {
  const BOOL has = GuardedBool("GetForegroundWindow", [] {
    return host::Handheld::Current() ? ERROR_SUCCESS : ERROR_NOT_READY;
  });
  return has ? kDesktop : 0;
}

LRESULT SendMessageW(HWND window, UINT message, WPARAM wParam, LPARAM lParam) {
  if (const DWORD error = host::FaultFor("SendMessageW")) {
    SetLastError(error);
    return static_cast<LRESULT>(static_cast<INT>(error));
  }
  if (window == kDesktop) return DefWindowProcW(window, message, wParam, lParam);
  const auto found = t_windows.find(window);
  if (found == t_windows.end()) {
    SetLastError(ERROR_INVALID_WINDOW_HANDLE);
    return 0;
  }
  const std::shared_ptr<Window> target = found->second;
  return target->Message(window, message, wParam, lParam);
}

// Neither can fail.
LRESULT DefWindowProcW(HWND, UINT, WPARAM, LPARAM) {
  return 0;
}

HGDIOBJ GetStockObject(INT object) {
  if (object < 0 || object >= kStockCount) return 0;
  return kStockObjects + static_cast<HGDIOBJ>(object);
}

namespace host {

std::size_t WindowsOfThread() {
  return t_windows.size();
}

}  // namespace host
}  // namespace ce
