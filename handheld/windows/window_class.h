// Window classes: what a name in CreateWindowExW stands for.
#pragma once

#include <atomic>
#include <memory>
#include <string>
#include <string_view>

#include "platform/windows.h"

namespace ce::host {

// What a window of a built-in class keeps, and how it answers.
class Control {
 public:
  Control() = default;
  Control(const Control&) = delete;
  Control& operator=(const Control&) = delete;
  virtual ~Control() = default;
  virtual LRESULT Message(UINT message, WPARAM wParam, LPARAM lParam) = 0;
};

using ControlFactory = std::unique_ptr<Control> (*)();

// Its windows are of one of two kinds: controls, or windows with a procedure.
struct WindowClass {
  ControlFactory make = nullptr;
  WNDPROC procedure = nullptr;
  std::atomic<unsigned> windows{0};  // alive, on all threads
};

// Thread-safe, all of them. A class that is removed while it has windows goes with the last.
// ERROR_SUCCESS, or the error that the call tells.
[[nodiscard]] DWORD AddWindowClass(std::u16string_view name, std::shared_ptr<WindowClass> added);
[[nodiscard]] DWORD RemoveWindowClass(std::u16string_view name, bool evenWithWindows);
// Null when there is none of this name.
std::shared_ptr<WindowClass> FindWindowClass(std::u16string_view name);

// Windows that the calling thread has.
std::size_t WindowsOfThread();

}  // namespace ce::host
