#include "tests/agent/device/test_modules.h"

#include <utility>

#include "handheld/base/built_in_module.h"
#include "handheld/base/settings.h"
#include "handheld/windows/windows.h"

namespace corvane::testing {
namespace {

std::vector<std::vector<ce::DWORD>> g_calls;

ce::LONG Synchronise(ce::DWORD a, ce::DWORD b, ce::DWORD c, ce::DWORD d) {
  g_calls.push_back({a, b, c, d});
  return 5;
}

const ce::host::ModuleFunction kFunctions[] = {
    {u"AGMALCPOption",
     reinterpret_cast<ce::FARPROC>(static_cast<ce::AgmalCpOptionFn>(&Synchronise))}};

ce::host::BuiltInModule g_rows[] = {
    {.name = u"RichInk.dll",
     .setting = ce::host::setting::kRichInk,
     .attach = ce::host::AddRichInkClass,
     .detach = ce::host::RemoveRichInkClass},
    {.name = u"mobilelink.cpl", .setting = kMobileLinkSetting, .functions = kFunctions},
};

}  // namespace

void SetMobileLinkHasFunction(bool has) {
  g_rows[1].functions = has ? std::span<const ce::host::ModuleFunction>(kFunctions)
                            : std::span<const ce::host::ModuleFunction>();
}

std::vector<std::vector<ce::DWORD>> TakeMobileLinkCalls() {
  return std::exchange(g_calls, {});
}

}  // namespace corvane::testing

namespace ce::host {

// In place of the platform's own.
std::span<const BuiltInModule> BuiltInModules() {
  return corvane::testing::g_rows;
}

}  // namespace ce::host
