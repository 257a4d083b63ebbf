// Windows and messages, as far as a hidden control needs them.
//
// Nothing is ever shown. A window belongs to the thread that made it: no other thread reaches it,
// and it ends with its thread at the latest. Class names match without regard to case.
#pragma once

#include "platform/modules.h"
#include "platform/types.h"

namespace ce {

using HWND = HANDLE;
using HMENU = HANDLE;
using HICON = HANDLE;
using HCURSOR = HANDLE;
using HBRUSH = HANDLE;
using HGDIOBJ = HANDLE;
using ATOM = WORD;
// Pointer-sized, so that an address fits.
using WPARAM = std::uintptr_t;
using LPARAM = std::intptr_t;
using LRESULT = std::intptr_t;
using DWORD_PTR = std::uintptr_t;
using WNDPROC = LRESULT (*)(HWND window, UINT message, WPARAM wParam, LPARAM lParam);

inline constexpr DWORD ERROR_INVALID_WINDOW_HANDLE = 1400;
inline constexpr DWORD ERROR_TLW_WITH_WSCHILD = 1406;
inline constexpr DWORD ERROR_CANNOT_FIND_WND_CLASS = 1407;
inline constexpr DWORD ERROR_CLASS_ALREADY_EXISTS = 1410;
inline constexpr DWORD ERROR_CLASS_DOES_NOT_EXIST = 1411;
inline constexpr DWORD ERROR_CLASS_HAS_WINDOWS = 1412;

inline constexpr DWORD WS_CHILD = 0x40000000;
inline constexpr INT CW_USEDEFAULT = static_cast<INT>(0x80000000);
inline constexpr UINT CS_VREDRAW = 1;
inline constexpr UINT CS_HREDRAW = 2;
inline constexpr INT WHITE_BRUSH = 0;

struct WNDCLASSW {
  UINT style = 0;
  WNDPROC lpfnWndProc = nullptr;
  INT cbClsExtra = 0;
  INT cbWndExtra = 0;
  HINSTANCE hInstance = nullptr;
  HICON hIcon = 0;
  HCURSOR hCursor = 0;
  HBRUSH hbrBackground = 0;
  const WCHAR* lpszMenuName = nullptr;
  const WCHAR* lpszClassName = nullptr;
};

// 0 and the last error on failure: ERROR_CLASS_ALREADY_EXISTS, ERROR_INVALID_PARAMETER.
ATOM RegisterClassW(const WNDCLASSW* windowClass);
// Fails with ERROR_CLASS_DOES_NOT_EXIST, or ERROR_CLASS_HAS_WINDOWS while one of them is alive.
BOOL UnregisterClassW(const WCHAR* name, HINSTANCE instance);

// Gives a new window of the class; 0 and the last error on failure. A child needs a parent. Place,
// size, menu and title mean nothing to a window that is never shown.
HWND CreateWindowExW(DWORD extendedStyle, const WCHAR* className, const WCHAR* title, DWORD style,
                     INT x, INT y, INT width, INT height, HWND parent, HMENU menu,
                     HINSTANCE instance, void* parameter);
BOOL DestroyWindow(HWND window);
// The handheld's own desktop: alive as long as the handheld is. 0 on failure.
HWND GetForegroundWindow();
// What the window's procedure answers. 0 and ERROR_INVALID_WINDOW_HANDLE when there is no such
// window.
LRESULT SendMessageW(HWND window, UINT message, WPARAM wParam, LPARAM lParam);
// Does nothing and answers 0, for every message.
LRESULT DefWindowProcW(HWND window, UINT message, WPARAM wParam, LPARAM lParam);
// 0 for an object that the system has no stock of.
HGDIOBJ GetStockObject(INT object);

// The RichInk control, window class "RichInk": there while the module "RichInk.dll" is loaded.
//
// Both messages take a format in `wParam` and an EDITSTREAM in `lParam`, and answer 0 or a failure:
// E_FAIL for a format that the control does not know, for input that is damaged or nested deeper
// than 256 groups, for more than 16 MiB either way, and when the callback failed, whose code is
// then in `dwError`; E_OUTOFMEMORY. After a failure the control's content is what it was before.
inline constexpr UINT EM_STREAMIN = 1097;
inline constexpr UINT EM_STREAMOUT = 1098;

inline constexpr DWORD SF_TEXT = 0x0001;          // in the handheld's 8-bit code page
inline constexpr DWORD SF_RTF = 0x0002;           // rich text
inline constexpr DWORD SF_TEXT_UNICODE = 0x0011;  // UTF-16LE; a byte-order mark is read over
inline constexpr DWORD SF_INK_NOTE = 0x00010802;  // the ink-note format (.pwi)

// Moves up to `bytes` bytes to or from `buffer` and tells in `*moved` how many it was. Nonzero is a
// failure. Reading ends when nothing was moved, writing when less was moved than offered.
using EDITSTREAMCALLBACK = DWORD (*)(DWORD_PTR cookie, BYTE* buffer, LONG bytes, LONG* moved);

struct EDITSTREAM {
  DWORD_PTR dwCookie = 0;
  DWORD dwError = 0;
  EDITSTREAMCALLBACK pfnCallback = nullptr;
};

}  // namespace ce
