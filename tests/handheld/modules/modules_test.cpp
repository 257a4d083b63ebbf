#include "platform/modules.h"

#include <gtest/gtest.h>
#include <unistd.h>

#include "handheld/base/fault.h"
#include "platform/status.h"
#include "tests/support/test_handheld.h"

namespace corvane {
namespace {

using namespace ce;
using host::FaultPlan;

using LoadLibraryCall = testing::HandheldTest;
using GetProcAddressCall = testing::HandheldTest;
using GetModuleHandleCall = testing::HandheldTest;
using GetExitCodeProcessCall = testing::HandheldTest;

TEST_F(LoadLibraryCall, LoadsTheControlThatEveryHandheldHas) {
  const HMODULE module = LoadLibraryW(u"RichInk.dll");
  ASSERT_NE(module, nullptr);
  EXPECT_EQ(GetModuleHandleW(u"richink.DLL"), module);
  EXPECT_TRUE(FreeLibrary(module));
  EXPECT_FALSE(FreeLibrary(module));
  EXPECT_EQ(GetLastError(), ERROR_INVALID_HANDLE);
}

TEST_F(LoadLibraryCall, FailsForAModuleThatTheHandheldLacks) {
  EXPECT_EQ(LoadLibraryW(u"mobilelink.cpl"), nullptr);
  EXPECT_EQ(GetLastError(), ERROR_MOD_NOT_FOUND);
  handheld_->Set(u"RichInk", DWORD{0});
  SetLastError(0);
  EXPECT_EQ(LoadLibraryW(u"RichInk.dll"), nullptr);
  EXPECT_EQ(GetLastError(), ERROR_MOD_NOT_FOUND);
}

TEST_F(LoadLibraryCall, RefusesNoName) {
  EXPECT_EQ(LoadLibraryW(nullptr), nullptr);
  EXPECT_EQ(GetLastError(), ERROR_INVALID_PARAMETER);
}

TEST_F(LoadLibraryCall, HandsOnAFault) {
  const auto plan = FaultPlan::FailCalls("LoadLibraryW", ERROR_NOT_ENOUGH_MEMORY);
  EXPECT_EQ(LoadLibraryW(u"RichInk.dll"), nullptr);
  EXPECT_EQ(GetLastError(), ERROR_NOT_ENOUGH_MEMORY);
  EXPECT_EQ(GetModuleHandleW(u"RichInk.dll"), nullptr);
}

TEST_F(LoadLibraryCall, IsNotFreedByAFailingFree) {
  const HMODULE module = LoadLibraryW(u"RichInk.dll");
  {
    const auto plan = FaultPlan::FailCalls("FreeLibrary", ERROR_GEN_FAILURE);
    EXPECT_FALSE(FreeLibrary(module));
  }
  EXPECT_TRUE(FreeLibrary(module));
}

TEST_F(GetProcAddressCall, FailsForAFunctionThatTheModuleLacks) {
  const HMODULE module = LoadLibraryW(u"RichInk.dll");
  EXPECT_EQ(GetProcAddressW(module, u"Nothing"), nullptr);
  EXPECT_EQ(GetLastError(), ERROR_PROC_NOT_FOUND);
  EXPECT_EQ(GetProcAddressW(module, nullptr), nullptr);
  EXPECT_EQ(GetLastError(), ERROR_INVALID_PARAMETER);
  FreeLibrary(module);
  EXPECT_EQ(GetProcAddressW(module, u"Nothing"), nullptr);
  EXPECT_EQ(GetLastError(), ERROR_INVALID_HANDLE);
  EXPECT_EQ(GetProcAddressW(GetModuleHandleW(nullptr), u"Nothing"), nullptr);
  EXPECT_EQ(GetLastError(), ERROR_PROC_NOT_FOUND);
}

TEST_F(GetProcAddressCall, HandsOnAFault) {
  const auto plan = FaultPlan::FailCalls("GetProcAddressW", ERROR_ACCESS_DENIED);
  EXPECT_EQ(GetProcAddressW(nullptr, u"Nothing"), nullptr);
  EXPECT_EQ(GetLastError(), ERROR_ACCESS_DENIED);
}

TEST_F(GetModuleHandleCall, GivesTheProgramsOwnAndTheLoaded) {
  EXPECT_NE(GetModuleHandleW(nullptr), nullptr);
  EXPECT_FALSE(FreeLibrary(GetModuleHandleW(nullptr)));
  EXPECT_EQ(GetModuleHandleW(u"RichInk.dll"), nullptr);
  EXPECT_EQ(GetLastError(), ERROR_MOD_NOT_FOUND);
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
