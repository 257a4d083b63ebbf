#include "platform/modules.h"

#include <gtest/gtest.h>
#include <unistd.h>

#include <stdexcept>

#include "handheld/base/built_in_module.h"
#include "handheld/base/fault.h"
#include "platform/status.h"
#include "tests/support/test_handheld.h"

namespace corvane {
namespace {

using namespace ce;
using host::FaultPlan;

int g_attached = 0;
bool g_refuses = false;

int Seven() {
  return 7;
}

const host::ModuleFunction kFunctions[] = {{u"Seven", reinterpret_cast<FARPROC>(&Seven)}};

const host::BuiltInModule kRows[] = {
    {.name = u"Plain.dll", .setting = u"Plain"},
    {.name = u"Tools.dll",
     .setting = u"Tools",
     .functions = kFunctions,
     .attach =
         [] {
           if (g_refuses) throw std::runtime_error("no");
           ++g_attached;
         },
     .detach = [] { --g_attached; }},
};

// Fails a test that leaves a module loaded.
class ModuleCall : public testing::HandheldTest {
 protected:
  void TearDown() override {
    EXPECT_EQ(g_attached, 0);
    HandheldTest::TearDown();
  }
  static void ExpectLacks(const WCHAR* name) {
    SetLastError(0);
    EXPECT_EQ(LoadLibraryW(name), nullptr);
    EXPECT_EQ(GetLastError(), ERROR_MOD_NOT_FOUND);
  }
};

using LoadLibraryCall = ModuleCall;
using FreeLibraryCall = ModuleCall;
using GetProcAddressCall = ModuleCall;
using GetModuleHandleCall = ModuleCall;
using GetExitCodeProcessCall = ModuleCall;

TEST_F(LoadLibraryCall, FindsAModuleWithoutRegardToCase) {
  const HMODULE module = LoadLibraryW(u"tOOLS.DLL");
  EXPECT_NE(module, nullptr);
  EXPECT_EQ(LoadLibraryW(u"Tools.dll"), module);
  EXPECT_TRUE(FreeLibrary(module));
  EXPECT_TRUE(FreeLibrary(module));
  ExpectLacks(u"Tools");
  ExpectLacks(u"");
}

TEST_F(LoadLibraryCall, LacksWhatTheHandheldIsSetNotToHave) {
  handheld_->Set(u"Tools", DWORD{0});
  ExpectLacks(u"Tools.dll");
  handheld_->Set(u"Tools", DWORD{1});
  EXPECT_TRUE(FreeLibrary(LoadLibraryW(u"Tools.dll")));
}

TEST_F(LoadLibraryCall, LacksEverythingWithoutAHandheld) {
  host::Handheld::MakeCurrent(nullptr);
  ExpectLacks(u"Tools.dll");
  host::Handheld::MakeCurrent(&*handheld_);
}

TEST_F(LoadLibraryCall, DoesNotLoadWhatCannotAttach) {
  g_refuses = true;
  EXPECT_EQ(LoadLibraryW(u"Tools.dll"), nullptr);
  EXPECT_EQ(GetLastError(), ERROR_GEN_FAILURE);
  EXPECT_EQ(GetModuleHandleW(u"Tools.dll"), nullptr);
  g_refuses = false;
  EXPECT_TRUE(FreeLibrary(LoadLibraryW(u"Tools.dll")));
}

TEST_F(LoadLibraryCall, RefusesNoName) {
  EXPECT_EQ(LoadLibraryW(nullptr), nullptr);
  EXPECT_EQ(GetLastError(), ERROR_INVALID_PARAMETER);
}

TEST_F(LoadLibraryCall, HandsOnAFault) {
  const auto plan = FaultPlan::FailCalls("LoadLibraryW", ERROR_NOT_ENOUGH_MEMORY);
  EXPECT_EQ(LoadLibraryW(u"Tools.dll"), nullptr);
  EXPECT_EQ(GetLastError(), ERROR_NOT_ENOUGH_MEMORY);
  EXPECT_EQ(GetModuleHandleW(u"Tools.dll"), nullptr);
}

TEST_F(FreeLibraryCall, DetachesWithTheLastUser) {
  const HMODULE module = LoadLibraryW(u"Tools.dll");
  LoadLibraryW(u"Tools.dll");
  EXPECT_EQ(g_attached, 1);
  EXPECT_TRUE(FreeLibrary(module));
  EXPECT_EQ(g_attached, 1);
  EXPECT_TRUE(FreeLibrary(module));
  EXPECT_EQ(g_attached, 0);
  EXPECT_FALSE(FreeLibrary(module));
  EXPECT_EQ(GetLastError(), ERROR_INVALID_HANDLE);
}

TEST_F(FreeLibraryCall, FreesNothingThatWasNotHandedOut) {
  int other = 0;
  EXPECT_FALSE(FreeLibrary(nullptr));
  EXPECT_FALSE(FreeLibrary(&other));
  EXPECT_FALSE(FreeLibrary(GetModuleHandleW(nullptr)));
}

TEST_F(FreeLibraryCall, LeavesTheModuleLoadedWhenItFails) {
  const HMODULE module = LoadLibraryW(u"Tools.dll");
  {
    const auto plan = FaultPlan::FailCalls("FreeLibrary", ERROR_GEN_FAILURE);
    EXPECT_FALSE(FreeLibrary(module));
  }
  EXPECT_TRUE(FreeLibrary(module));
}

TEST_F(GetProcAddressCall, FindsFunctionsByTheirExactNameWhileLoaded) {
  const auto error = [](HMODULE module, const WCHAR* name) {
    EXPECT_EQ(GetProcAddressW(module, name), nullptr);
    return GetLastError();
  };
  const HMODULE module = LoadLibraryW(u"Tools.dll");
  const HMODULE plain = LoadLibraryW(u"Plain.dll");
  EXPECT_EQ(reinterpret_cast<int (*)()>(GetProcAddressW(module, u"Seven"))(), 7);
  EXPECT_EQ(error(module, u"seven"), ERROR_PROC_NOT_FOUND);
  EXPECT_EQ(error(plain, u"Seven"), ERROR_PROC_NOT_FOUND);
  EXPECT_EQ(error(GetModuleHandleW(nullptr), u"Seven"), ERROR_PROC_NOT_FOUND);
  EXPECT_EQ(error(module, nullptr), ERROR_INVALID_PARAMETER);
  FreeLibrary(plain);
  FreeLibrary(module);
  EXPECT_EQ(error(module, u"Seven"), ERROR_INVALID_HANDLE);
}

TEST_F(GetProcAddressCall, HandsOnAFault) {
  const auto plan = FaultPlan::FailCalls("GetProcAddressW", ERROR_ACCESS_DENIED);
  EXPECT_EQ(GetProcAddressW(nullptr, u"Nothing"), nullptr);
  EXPECT_EQ(GetLastError(), ERROR_ACCESS_DENIED);
}

TEST_F(GetModuleHandleCall, KnowsWhatIsLoadedWithoutCountingIt) {
  EXPECT_NE(GetModuleHandleW(nullptr), nullptr);
  EXPECT_EQ(GetModuleHandleW(u"Tools.dll"), nullptr);
  EXPECT_EQ(GetLastError(), ERROR_MOD_NOT_FOUND);
  const HMODULE module = LoadLibraryW(u"Tools.dll");
  EXPECT_EQ(GetModuleHandleW(u"TOOLS.dll"), module);
  EXPECT_TRUE(FreeLibrary(module));
  EXPECT_EQ(GetModuleHandleW(u"Tools.dll"), nullptr);
}

TEST_F(GetExitCodeProcessCall, KnowsTheAgentAlone) {
  for (const HANDLE own : {HANDLE{0x42}, static_cast<HANDLE>(::getpid())}) {
    DWORD code = 0;
    EXPECT_TRUE(GetExitCodeProcess(own, &code));
    EXPECT_EQ(code, STILL_ACTIVE);
  }
  for (const HANDLE other : {HANDLE{0}, INVALID_HANDLE_VALUE, HANDLE{0x104}}) {
    DWORD code = 5;
    EXPECT_FALSE(GetExitCodeProcess(other, &code));
    EXPECT_EQ(GetLastError(), ERROR_INVALID_HANDLE);
    EXPECT_EQ(code, 5u);
  }
}

TEST_F(GetExitCodeProcessCall, RefusesNoPlaceForTheCode) {
  EXPECT_FALSE(GetExitCodeProcess(0x42, nullptr));
  EXPECT_EQ(GetLastError(), ERROR_INVALID_PARAMETER);
}

}  // namespace
}  // namespace corvane

namespace ce::host {

// In place of the handheld's own.
std::span<const BuiltInModule> BuiltInModules() {
  return corvane::kRows;
}

}  // namespace ce::host
