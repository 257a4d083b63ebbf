// Modules found by name at run time, and processes.
//
// Which modules there are is the handheld's: its built-in libraries, as far as it is set to have
// them. Names match without regard to case. Functions belong to their module and are callable until
// it is freed the last time.
#pragma once

#include "platform/types.h"

namespace ce {

using HMODULE = void*;
using HINSTANCE = HMODULE;
// The caller knows the function's true type.
using FARPROC = void (*)();

inline constexpr DWORD ERROR_MOD_NOT_FOUND = 126;
inline constexpr DWORD STILL_ACTIVE = 259;

// Counted. Null with the last error (ERROR_MOD_NOT_FOUND) when the handheld has no such module.
HMODULE LoadLibraryW(const WCHAR* name);
BOOL FreeLibrary(HMODULE module);
// Null with ERROR_PROC_NOT_FOUND.
FARPROC GetProcAddressW(HMODULE module, const WCHAR* name);
// The program's own when `name` is null, else a module that is loaded; not counted. Null with
// ERROR_MOD_NOT_FOUND.
HMODULE GetModuleHandleW(const WCHAR* name);

// "AGMALCPOption" of the module "mobilelink.cpl", the control panel of the AvantGo client. (0, 2,
// 0, 0) synchronises, and returns when that is done.
using AgmalCpOptionFn = LONG (*)(DWORD, DWORD, DWORD, DWORD);

// The exit code of a process that a handle stands for, STILL_ACTIVE while it runs.
// ERROR_INVALID_HANDLE when it stands for none. On the device a process's number is a handle to it.
BOOL GetExitCodeProcess(HANDLE process, DWORD* exitCode);

}  // namespace ce
