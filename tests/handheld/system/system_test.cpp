#include "platform/system.h"

#include <gtest/gtest.h>
#include <unistd.h>

#include <string>

#include "handheld/base/fault.h"
#include "platform/status.h"
#include "tests/support/test_handheld.h"

namespace corvane {
namespace {

using namespace ce;

class SystemCall : public testing::HandheldTest {
 protected:
  static OSVERSIONINFO Version() {
    OSVERSIONINFO version{};
    version.dwOSVersionInfoSize = sizeof version;
    EXPECT_TRUE(GetVersionExW(&version));
    return version;
  }
};

TEST_F(SystemCall, GetVersionExTellsTheHandheldsSystem) {
  EXPECT_EQ(Version().dwMajorVersion, 5u);
  EXPECT_EQ(Version().dwMinorVersion, 2u);
  EXPECT_EQ(Version().dwPlatformId, 3u);
  handheld_.SetOsVersion(4, 20);
  EXPECT_EQ(Version().dwMajorVersion, 4u);
  EXPECT_EQ(Version().dwMinorVersion, 20u);
}

TEST_F(SystemCall, GetVersionExRefusesAShortRecord) {
  OSVERSIONINFO version{};
  version.dwOSVersionInfoSize = sizeof version - 1;
  EXPECT_FALSE(GetVersionExW(&version));
  EXPECT_EQ(GetLastError(), ERROR_INSUFFICIENT_BUFFER);
  EXPECT_EQ(version.dwMajorVersion, 0u);
  EXPECT_FALSE(GetVersionExW(nullptr));
}

TEST_F(SystemCall, GetSystemDefaultLangIDIsTheSetting) {
  EXPECT_EQ(GetSystemDefaultLangID(), 0x0409);
  handheld_.SetLanguage(kLangJapanese);
  EXPECT_EQ(GetSystemDefaultLangID(), kLangJapanese);
}

TEST_F(SystemCall, GetModuleFileNameIsThePlaceOnTheDevice) {
  WCHAR name[260];
  EXPECT_EQ(GetModuleFileNameW(0, name, 260), 20u);
  EXPECT_EQ(std::u16string(name), u"\\Windows\\corvane.exe");
  EXPECT_EQ(GetModuleFileNameW(0, name, 21), 20u);
  EXPECT_EQ(GetModuleFileNameW(0, name, 20), 0u);
  EXPECT_EQ(GetLastError(), ERROR_INSUFFICIENT_BUFFER);
  EXPECT_EQ(GetModuleFileNameW(4, name, 260), 0u);
  EXPECT_EQ(GetLastError(), ERROR_INVALID_HANDLE);
  EXPECT_EQ(GetModuleFileNameW(0, nullptr, 260), 0u);
}

TEST_F(SystemCall, GetCurrentProcessIdIsTheHosts) {
  EXPECT_EQ(GetCurrentProcessId(), static_cast<DWORD>(::getpid()));
}

TEST_F(SystemCall, HandsOnItsFaults) {
  const auto plan = [](const char* call) {
    return host::FaultPlan::FailCalls(call, ERROR_GEN_FAILURE);
  };
  WCHAR name[260];
  OSVERSIONINFO version{};
  version.dwOSVersionInfoSize = sizeof version;
  handheld_.SetLanguage(kLangJapanese);
  {
    const auto fault = plan("GetVersionExW");
    EXPECT_FALSE(GetVersionExW(&version));
  }
  {
    const auto fault = plan("GetSystemDefaultLangID");
    EXPECT_EQ(GetSystemDefaultLangID(), 0x0409);
  }
  {
    const auto fault = plan("GetModuleFileNameW");
    EXPECT_EQ(GetModuleFileNameW(0, name, 260), 0u);
  }
  const auto fault = plan("GetCurrentProcessId");
  EXPECT_EQ(GetCurrentProcessId(), 0u);
}

TEST(SystemCallWithoutAHandheld, FailsCleanlyOrHasADefault) {
  OSVERSIONINFO version{};
  version.dwOSVersionInfoSize = sizeof version;
  EXPECT_FALSE(GetVersionExW(&version));
  EXPECT_EQ(GetLastError(), ERROR_NOT_READY);
  EXPECT_EQ(GetSystemDefaultLangID(), 0x0409);
}

}  // namespace
}  // namespace corvane
