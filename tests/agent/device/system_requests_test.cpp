#include "agent/device/system_requests.h"

#include <unistd.h>

#include <cstdio>

#include "handheld/base/fault.h"
#include "platform/modules.h"
#include "tests/agent/device/device_support.h"
#include "tests/agent/device/test_modules.h"
#include "tests/support/fault_runs.h"

namespace corvane::testing {
namespace {

using ce::host::FaultPlan;
using ::testing::ElementsAre;
using ::testing::IsEmpty;

using SystemRequest = DeviceTest;

TEST_F(SystemRequest, RefusesAStream) {
  for (const RequestHandler handler :
       {GetDLLVersion, CVCeGetSystemDefaultLangID, CVCeGetExitCodeProcess, CVCeStartAvantGoSync}) {
    ExpectNoOutput(Run(handler, Word(0x42), SomeStream()), ce::E_INVALIDARG);
  }
}

TEST_F(SystemRequest, AnswersOutOfMemoryWithoutOutput) {
  const auto plan = FaultPlan::FailCalls("LocalAlloc", ce::ERROR_NOT_ENOUGH_MEMORY);
  for (const RequestHandler handler : {GetDLLVersion, CVCeGetSystemDefaultLangID}) {
    ExpectNoOutput(Run(handler), ce::E_OUTOFMEMORY);
  }
}

TEST_F(SystemRequest, GetDLLVersionAlwaysAnswersTheSameBlock) {
  const std::string expected =
      Word(52) + Word(4) + Word(12) + "Tue Jun 26 10:41:20 2007" + std::string(16, '\0');
  for (const char* input : {"", "ignored"}) {
    const DeviceOutcome outcome = Run(GetDLLVersion, input);
    EXPECT_EQ(outcome.status, ce::S_OK);
    EXPECT_EQ(outcome.count, 52u);
    EXPECT_EQ(outcome.output, expected);
  }
}

TEST_F(SystemRequest, GetSystemDefaultLangIDAnswersTheHandheldsLanguage) {
  for (const ce::LANGID language : std::initializer_list<ce::LANGID>{0x0409, 0x0411, 0xFFFF}) {
    handheld_.SetLanguage(language);
    const DeviceOutcome outcome = Run(CVCeGetSystemDefaultLangID, "ignored");
    EXPECT_EQ(outcome.status, ce::S_OK);
    EXPECT_EQ(outcome.output, Word(language));
  }
}

class ExitCode : public DeviceTest {
 protected:
  static DeviceOutcome Ask(ce::DWORD process) { return Run(CVCeGetExitCodeProcess, Word(process)); }
};

TEST_F(ExitCode, IsThatOfARunningProcessForTheAgentItself) {
  for (const ce::DWORD own : {0x42u, static_cast<ce::DWORD>(::getpid())}) {
    const DeviceOutcome outcome = Ask(own);
    EXPECT_EQ(outcome.status, ce::S_OK);
    EXPECT_EQ(outcome.output, Word(ce::STILL_ACTIVE));
  }
}

TEST_F(ExitCode, IsNoneForAHandleThatStandsForNoProcess) {
  for (const ce::DWORD other : {0u, 1u, 0xFFFFFFFFu}) {
    ExpectNoOutput(Ask(other), static_cast<ce::HRESULT>(ce::ERROR_INVALID_HANDLE));
  }
}

TEST_F(ExitCode, RefusesAnInputOfAnotherSizeBehindItsFirstLine) {
  SwitchLogOn();
  for (const std::size_t size : {0u, 2u, 8u}) {
    ExpectNoOutput(Run(CVCeGetExitCodeProcess, std::string(size, '\x42')), ce::E_INVALIDARG);
  }
  EXPECT_THAT(LogMessages(),
              ElementsAre("CVCeGetExitCodeProcess called", "CVCeGetExitCodeProcess called",
                          "CVCeGetExitCodeProcess called"));
}

TEST_F(ExitCode, LogsWhereTheBlockLiesAndNotTheCode) {
  SwitchLogOn();
  const DeviceOutcome outcome = Ask(0x42);
  char line[100];
  std::snprintf(line, sizeof(line), "GetExitCodeProcess worked *ppOutput = %d (0x%08X)",
                static_cast<int>(outcome.address), outcome.address);
  EXPECT_THAT(LogMessages(), ElementsAre("CVCeGetExitCodeProcess called", line));
}

TEST_F(ExitCode, LogsItsFailure) {
  SwitchLogOn();
  Ask(0);
  EXPECT_THAT(LogMessages(),
              ElementsAre("CVCeGetExitCodeProcess called", "GetExitCodeProcess failed"));
}

TEST_F(ExitCode, ReadsTheLogSettingsItself) {
  handheld_.SetAgentValue(u"Logging", 1);
  Ask(0);
  EXPECT_THAT(LogMessages(),
              ElementsAre("CVCeGetExitCodeProcess called", "GetExitCodeProcess failed"));
}

TEST_F(ExitCode, AnswersTheSystemsErrorWithoutMemory) {
  const auto plan = FaultPlan::FailCalls("LocalAlloc", ce::ERROR_NOT_ENOUGH_MEMORY);
  ExpectNoOutput(Ask(0x42), static_cast<ce::HRESULT>(ce::ERROR_NOT_ENOUGH_MEMORY));
}

TEST_F(ExitCode, EndsHonestlyWhicheverCallFails) {
  SwitchLogOn();
  const auto calls = FailEachCall(
      ce::ERROR_ACCESS_DENIED, [] { return Ask(0x42); },
      [](const DeviceOutcome& outcome, const std::string& call) {
        if (call == "LocalAlloc" || call == "GetExitCodeProcess") {
          ExpectNoOutput(outcome, static_cast<ce::HRESULT>(ce::ERROR_ACCESS_DENIED));
        } else {
          EXPECT_EQ(outcome.status, ce::S_OK) << "the log's troubles are its own";
          EXPECT_EQ(outcome.output, Word(ce::STILL_ACTIVE));
        }
      });
  EXPECT_GT(calls, 5u);
}

class AvantGoSync : public DeviceTest {
 protected:
  void SetUp() override {
    SetMobileLinkHasFunction(true);
    TakeMobileLinkCalls();
  }
  void WithoutClient() { handheld_->Set(kMobileLinkSetting, ce::DWORD{0}); }
  // The output as the dispatcher sets it before, and as it is to stay.
  static ce::HRESULT Start(CorvaneStream* stream = nullptr) {
    ce::DWORD count = 77;
    ce::BYTE some = 0;
    ce::BYTE* output = &some;
    const ce::HRESULT status = CVCeStartAvantGoSync(3, &some, &count, &output, stream);
    EXPECT_EQ(count, 77u);
    EXPECT_EQ(output, &some);
    return status;
  }
};

TEST_F(AvantGoSync, AnswersTwoOnAHandheldWithoutTheClient) {
  WithoutClient();
  SwitchLogOn();
  EXPECT_EQ(Start(), 2);
  EXPECT_THAT(LogMessages(),
              ElementsAre("CVCeStartAvantGoSync called", "Didn't find MobileLink DLL"));
}

TEST_F(AvantGoSync, AnswersTwoWhateverKeptTheModuleFromBeingLoaded) {
  const auto plan = FaultPlan::FailCalls("LoadLibraryW", ce::ERROR_NOT_ENOUGH_MEMORY);
  EXPECT_EQ(Start(), 2);
}

TEST_F(AvantGoSync, AnswersNotImplementedForAClientWithoutTheFunction) {
  SetMobileLinkHasFunction(false);
  SwitchLogOn();
  EXPECT_EQ(Start(), ce::E_NOTIMPL);
  EXPECT_THAT(LogMessages(), ElementsAre("CVCeStartAvantGoSync called", "found MobileLink CPL",
                                         "Didn't find AGMALCPOption routine"));
}

TEST_F(AvantGoSync, CallsTheClientOnce) {
  SwitchLogOn();
  EXPECT_EQ(Start(), ce::S_OK) << "whatever the client answers";
  EXPECT_THAT(TakeMobileLinkCalls(), ElementsAre(std::vector<ce::DWORD>{0, 2, 0, 0}));
  EXPECT_THAT(LogMessages(), ElementsAre("CVCeStartAvantGoSync called", "found MobileLink CPL",
                                         "Ready to call AGMALCPOption", "Back from AGMALCPOption"));
}

TEST_F(AvantGoSync, SaysThatItIsReadyEvenWhileTheLogIsOff) {
  EXPECT_EQ(Start(), ce::S_OK);
  EXPECT_THAT(LogMessages(), ElementsAre("Ready to call AGMALCPOption"));
}

TEST_F(AvantGoSync, WritesNothingWhileTheLogIsOffWithoutTheClient) {
  WithoutClient();
  EXPECT_EQ(Start(), 2);
  EXPECT_THAT(LogMessages(), IsEmpty());
}

TEST_F(AvantGoSync, KeepsTheModuleLoaded) {
  EXPECT_EQ(Start(), ce::S_OK);
  EXPECT_NE(ce::GetModuleHandleW(u"mobilelink.cpl"), nullptr);
}

TEST_F(AvantGoSync, RefusesAStreamBehindItsFirstLine) {
  SwitchLogOn();
  EXPECT_EQ(Start(SomeStream()), ce::E_INVALIDARG);
  EXPECT_THAT(TakeMobileLinkCalls(), IsEmpty());
  EXPECT_THAT(LogMessages(), ElementsAre("CVCeStartAvantGoSync called"));
}

TEST_F(AvantGoSync, ReadsTheLogSettingsItself) {
  handheld_.SetAgentValue(u"Logging", 1);
  WithoutClient();
  Start();
  EXPECT_THAT(LogMessages(),
              ElementsAre("CVCeStartAvantGoSync called", "Didn't find MobileLink DLL"));
}

TEST_F(AvantGoSync, EndsHonestlyWhicheverCallFails) {
  const auto calls = FailEachCall(
      ce::ERROR_ACCESS_DENIED, [] { return Start(); },
      [](ce::HRESULT status, const std::string& call) {
        const bool called = !TakeMobileLinkCalls().empty();
        EXPECT_EQ(status, call == "LoadLibraryW"      ? 2
                          : call == "GetProcAddressW" ? ce::E_NOTIMPL
                                                      : ce::S_OK);
        EXPECT_EQ(called, status == ce::S_OK);
      });
  EXPECT_GT(calls, 2u);
}

}  // namespace
}  // namespace corvane::testing
