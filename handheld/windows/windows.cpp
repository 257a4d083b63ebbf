#include "handheld/windows/windows.h"

#include <atomic>
#include <map>
#include <memory>
#include <mutex>
#include <optional>
#include <string>
#include <string_view>
#include <unordered_map>
#include <utility>

#include "common/text/unicode.h"
#include "handheld/base/guarded.h"
#include "handheld/directory/handheld.h"
#include "handheld/ink/ink_control.h"
#include "platform/windows.h"

namespace ce {
namespace {

using host::GuardedBool;

constexpr char16_t kRichInkClass[] = u"RichInk";

// Beyond every handle that NewHandle gives.
constexpr HWND kDesktop = 0x10;
constexpr HGDIOBJ kStockObjects = 0x20;
constexpr INT kStockCount = 20;

// Goes with the last of its windows when it is removed while it has some.
struct WindowClass {
  WNDPROC procedure = nullptr;       // null: its windows are ink controls
  std::atomic<unsigned> windows{0};  // alive, on all threads
};

struct Classes {
  std::mutex lock;                                                // of everything here
  std::map<std::u16string, std::shared_ptr<WindowClass>> byName;  // folded
};

// Never destroyed: a thread with windows may end after static objects have.
Classes& AllClasses() {
  static Classes* const classes = new Classes;
  return *classes;
}

// False when the name is taken.
bool AddClass(std::u16string_view name, WNDPROC procedure) {
  auto added = std::make_shared<WindowClass>();
  added->procedure = procedure;
  Classes& classes = AllClasses();
  const std::lock_guard guard(classes.lock);
  return classes.byName.emplace(text::Fold(name), std::move(added)).second;
}

// Null when there is none of this name.
std::shared_ptr<WindowClass> FindClass(std::u16string_view name) {
  Classes& classes = AllClasses();
  const std::lock_guard guard(classes.lock);
  const auto found = classes.byName.find(text::Fold(name));
  return found == classes.byName.end() ? nullptr : found->second;
}

class Window {
 public:
  explicit Window(std::shared_ptr<WindowClass> windowClass) : class_(std::move(windowClass)) {
    if (!class_->procedure) control_.emplace();
    ++class_->windows;
  }
  Window(const Window&) = delete;
  Window& operator=(const Window&) = delete;
  ~Window() { --class_->windows; }

  LRESULT Message(HWND self, UINT message, WPARAM wParam, LPARAM lParam) {
    return control_ ? control_->Message(message, wParam, lParam)
                    : class_->procedure(self, message, wParam, lParam);
  }

 private:
  const std::shared_ptr<WindowClass> class_;
  std::optional<host::InkControl> control_;
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

ATOM RegisterClassW(const WNDCLASSW* windowClass) {
  static std::atomic<ATOM> last{0xC000};
  const BOOL registered = GuardedBool("RegisterClassW", [&]() -> DWORD {
    if (!windowClass || !windowClass->lpfnWndProc || !windowClass->lpszClassName ||
        !*windowClass->lpszClassName) {
      return ERROR_INVALID_PARAMETER;
    }
    return AddClass(windowClass->lpszClassName, windowClass->lpfnWndProc)
               ? ERROR_SUCCESS
               : ERROR_CLASS_ALREADY_EXISTS;
  });
  // The range of the atoms of names.
  return registered ? static_cast<ATOM>(0xC000 | ++last) : ATOM{0};
}

BOOL UnregisterClassW(const WCHAR* name, HINSTANCE) {
  return GuardedBool("UnregisterClassW", [&]() -> DWORD {
    if (!name) return ERROR_INVALID_PARAMETER;
    Classes& classes = AllClasses();
    const std::lock_guard guard(classes.lock);
    const auto found = classes.byName.find(text::Fold(name));
    if (found == classes.byName.end()) return ERROR_CLASS_DOES_NOT_EXIST;
    if (found->second->windows != 0) return ERROR_CLASS_HAS_WINDOWS;
    classes.byName.erase(found);
    return ERROR_SUCCESS;
  });
}

HWND CreateWindowExW(DWORD, const WCHAR* className, const WCHAR*, DWORD style, INT, INT, INT, INT,
                     HWND parent, HMENU, HINSTANCE, void*) {
  HWND handle = 0;
  GuardedBool("CreateWindowExW", [&]() -> DWORD {
    std::shared_ptr<WindowClass> found = className ? FindClass(className) : nullptr;
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

void AddRichInkClass() {
  AddClass(kRichInkClass, nullptr);
}

void RemoveRichInkClass() {
  Classes& classes = AllClasses();
  const std::lock_guard guard(classes.lock);
  const auto found = classes.byName.find(text::Fold(kRichInkClass));
  if (found != classes.byName.end() && !found->second->procedure) classes.byName.erase(found);
}

std::size_t WindowsOfThread() {
  return t_windows.size();
}

}  // namespace host
}  // namespace ce
