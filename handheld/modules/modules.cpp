#include "platform/modules.h"
#include "common/text/unicode.h"

#include <unistd.h>

#include <algorithm>
#include <mutex>
#include <vector>

#include "handheld/base/built_in_module.h"
#include "handheld/base/guarded.h"
#include "handheld/directory/handheld.h"

namespace ce {
namespace {

using host::BuiltInModule;
using host::GuardedBool;

struct Module {
  const BuiltInModule* row;
  unsigned users = 0;
};

// Who uses which of the modules. A handle is a module's address here.
class Modules {
 public:
  Modules() {
    for (const BuiltInModule& row : host::BuiltInModules()) modules_.push_back({&row});
  }

  // Null when there is none of this name.
  Module* Named(std::u16string_view name) {
    const std::u16string folded = text::Fold(name);
    return Find([&](const Module& module) { return text::Fold(module.row->name) == folded; });
  }
  // Null when it is not loaded.
  Module* Loaded(HMODULE handle) {
    return Find([&](const Module& module) { return &module == handle && module.users != 0; });
  }

  std::mutex lock;  // of everything that is called here

 private:
  template <typename Predicate>
  Module* Find(Predicate predicate) {
    const auto found = std::find_if(modules_.begin(), modules_.end(), predicate);
    return found == modules_.end() ? nullptr : &*found;
  }

  std::vector<Module> modules_;
};

// Never destroyed: a module may be freed by what ends after static objects have.
Modules& AllModules() {
  static Modules* const modules = new Modules;
  return *modules;
}

// Runs `body` with the modules, as GuardedBool does.
template <typename Body>
BOOL WithModules(const char* call, Body body) {
  return GuardedBool(call, [&]() -> DWORD {
    Modules& modules = AllModules();
    const std::lock_guard guard(modules.lock);
    return body(modules);
  });
}

bool HandheldHas(const BuiltInModule& row) {
  const host::Handheld* handheld = host::Handheld::Current();
  return handheld && handheld->Number(row.setting, 1) != 0;
}

// Its address stands for the program itself.
int g_program;

// What a program calls itself without knowing its number.
constexpr HANDLE kCurrentProcess = 0x42;

}  // namespace

HMODULE LoadLibraryW(const WCHAR* name) {
  HMODULE handle = nullptr;
  WithModules("LoadLibraryW", [&](Modules& modules) -> DWORD {
    if (!name) return ERROR_INVALID_PARAMETER;
    Module* const module = modules.Named(name);
    if (!module || !HandheldHas(*module->row)) return ERROR_MOD_NOT_FOUND;
    if (module->users == 0 && module->row->attach) module->row->attach();
    ++module->users;
    handle = module;
    return ERROR_SUCCESS;
  });
  return handle;
}

BOOL FreeLibrary(HMODULE handle) {
  return WithModules("FreeLibrary", [&](Modules& modules) -> DWORD {
    Module* const module = modules.Loaded(handle);
    if (!module) return ERROR_INVALID_HANDLE;
    if (--module->users == 0 && module->row->detach) module->row->detach();
    return ERROR_SUCCESS;
  });
}

FARPROC GetProcAddressW(HMODULE handle, const WCHAR* name) {
  FARPROC function = nullptr;
  WithModules("GetProcAddressW", [&](Modules& modules) -> DWORD {
    if (!name) return ERROR_INVALID_PARAMETER;
    if (handle == &g_program) return ERROR_PROC_NOT_FOUND;
    const Module* const module = modules.Loaded(handle);
    if (!module) return ERROR_INVALID_HANDLE;
    for (const host::ModuleFunction& row : module->row->functions) {
      if (row.name == name) function = row.function;
    }
    return function ? ERROR_SUCCESS : ERROR_PROC_NOT_FOUND;
  });
  return function;
}

HMODULE GetModuleHandleW(const WCHAR* name) {
  HMODULE handle = nullptr;
  WithModules("GetModuleHandleW", [&](Modules& modules) -> DWORD {
    handle = name ? modules.Loaded(modules.Named(name)) : static_cast<HMODULE>(&g_program);
    return handle ? ERROR_SUCCESS : ERROR_MOD_NOT_FOUND;
  });
  return handle;
}

// The agent is the handheld's only process.
BOOL GetExitCodeProcess(HANDLE process, DWORD* exitCode) {
  return GuardedBool("GetExitCodeProcess", [&]() -> DWORD {
    if (!exitCode) return ERROR_INVALID_PARAMETER;
    if (process != kCurrentProcess && process != static_cast<HANDLE>(::getpid())) {
      return ERROR_INVALID_HANDLE;
    }
    *exitCode = STILL_ACTIVE;
    return ERROR_SUCCESS;
  });
}

}  // namespace ce
