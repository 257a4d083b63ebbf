#include "handheld/windows/window_class.h"

#include <map>
#include <mutex>
#include <utility>

#include "common/text/utf.h"
#include "handheld/base/guarded.h"

namespace ce {
namespace host {
namespace {

struct Classes {
  std::mutex lock;
  std::map<std::u16string, std::shared_ptr<WindowClass>> byName;  // folded
};

// Never destroyed: a thread with windows may end after static objects have.
Classes& AllClasses() {
  static Classes* const classes = new Classes;
  return *classes;
}

}  // namespace

DWORD AddWindowClass(std::u16string_view name, std::shared_ptr<WindowClass> added) {
  Classes& classes = AllClasses();
  const std::lock_guard guard(classes.lock);
  const bool isNew = classes.byName.emplace(Fold(name), std::move(added)).second;
  return isNew ? ERROR_SUCCESS : ERROR_CLASS_ALREADY_EXISTS;
}

DWORD RemoveWindowClass(std::u16string_view name, bool evenWithWindows) {
  Classes& classes = AllClasses();
  const std::lock_guard guard(classes.lock);
  const auto found = classes.byName.find(Fold(name));
  if (found == classes.byName.end()) return ERROR_CLASS_DOES_NOT_EXIST;
  if (found->second->windows != 0 && !evenWithWindows) return ERROR_CLASS_HAS_WINDOWS;
  classes.byName.erase(found);
  return ERROR_SUCCESS;
}

std::shared_ptr<WindowClass> FindWindowClass(std::u16string_view name) {
  Classes& classes = AllClasses();
  const std::lock_guard guard(classes.lock);
  const auto found = classes.byName.find(Fold(name));
  return found == classes.byName.end() ? nullptr : found->second;
}

}  // namespace host

ATOM RegisterClassW(const WNDCLASSW* windowClass) {
  static std::atomic<ATOM> last{0xC000};
  const BOOL registered = host::GuardedBool("RegisterClassW", [&]() -> DWORD {
    if (!windowClass || !windowClass->lpfnWndProc || !windowClass->lpszClassName ||
        !*windowClass->lpszClassName) {
      return ERROR_INVALID_PARAMETER;
    }
    auto added = std::make_shared<host::WindowClass>();
    added->procedure = windowClass->lpfnWndProc;
    return host::AddWindowClass(windowClass->lpszClassName, std::move(added));
  });
  // The range of the atoms of names.
  return registered ? static_cast<ATOM>(0xC000 | ++last) : ATOM{0};
}

BOOL UnregisterClassW(const WCHAR* name, HINSTANCE) {
  return host::GuardedBool("UnregisterClassW", [&]() -> DWORD {
    if (!name) return ERROR_INVALID_PARAMETER;
    return host::RemoveWindowClass(name, false);
  });
}

}  // namespace ce
