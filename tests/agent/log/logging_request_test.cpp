// The switch: read from the registry, set by the desktop.
#include "agent/log/logging_request.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cstring>

#include "agent/log/log.h"
#include "handheld/base/fault.h"
#include "handheld/registry/registry_store.h"
#include "platform/registry.h"
#include "tests/agent/log/log_support.h"

namespace corvane {
namespace {

using ::testing::ElementsAre;
using ::testing::HasSubstr;
using ::testing::IsEmpty;
using testing::LogTest;

class LoggingSwitch : public LogTest {
 protected:
  void SetUp() override {
    LogTest::SetUp();
    ResetLogSettings();
  }

  ce::HRESULT Reset(ce::DWORD level) {
    ce::BYTE input[sizeof(level) + 1];
    std::memcpy(input + 1, &level, sizeof(level));  // not aligned, as on the wire
    return CVResetLoggingState(sizeof(level), input + 1, &outputCount_, &output_, nullptr);
  }
  ce::DWORD StoredLevel() {
    ce::HKEY key = 0;
    ce::DWORD level = 0xBAD;
    ce::DWORD size = sizeof(level);
    ce::RegOpenKeyExW(ce::HKEY_LOCAL_MACHINE, kAgentKey, 0, 0, &key);
    ce::RegQueryValueExW(key, kLoggingValue, nullptr, nullptr, reinterpret_cast<ce::BYTE*>(&level),
                         &size);
    ce::RegCloseKey(key);
    return level;
  }

  ce::DWORD outputCount_ = 0;
  ce::BYTE* output_ = nullptr;
};

TEST_F(LoggingSwitch, IsOffWithoutAValue) {
  EXPECT_EQ(LoadLogSettings(), 0);
  EXPECT_FALSE(LoggingIsOn());
  EXPECT_FALSE(VerboseLogging);
}

TEST_F(LoggingSwitch, IsLoadedFromTheRegistry) {
  handheld_.SetAgentValue(u"Logging", 7);
  EXPECT_EQ(LoadLogSettings(), 0);
  EXPECT_EQ(LoggingLevel, 7u);
  EXPECT_FALSE(VerboseLogging);
}

TEST_F(LoggingSwitch, Level42IsVerbose) {
  handheld_.SetAgentValue(u"Logging", 42);
  EXPECT_EQ(LoadLogSettings(), 0);
  EXPECT_EQ(LoggingLevel, 42u);
  EXPECT_TRUE(VerboseLogging);
}

TEST_F(LoggingSwitch, IsLoadedOnce) {
  EXPECT_EQ(LoadLogSettings(), 0);
  handheld_.SetAgentValue(u"Logging", 1);
  EXPECT_EQ(LoadLogSettings(), 0);
  EXPECT_FALSE(LoggingIsOn());
  ResetLogSettings();
  EXPECT_EQ(LoadLogSettings(), 0);
  EXPECT_TRUE(LoggingIsOn());
}

TEST_F(LoggingSwitch, CountsAsLoadedAlsoWhenTheRegistryFailed) {
  handheld_.SetAgentValue(u"Logging", 1);
  {
    const auto plan = ce::host::FaultPlan::FailCalls("RegOpenKeyExW", 5);
    EXPECT_EQ(LoadLogSettings(), 0);
  }
  EXPECT_EQ(LoadLogSettings(), 0);
  EXPECT_FALSE(LoggingIsOn());
}

TEST_F(LoggingSwitch, IgnoresAValueOfAnotherTypeOrSize) {
  auto& registry = handheld_->registry();
  const std::u16string key = std::u16string(kAgentKey);
  ASSERT_EQ(registry.SetValue(key, u"Logging", ce::host::RegistryValue::Text(u"1")), 0u);
  EXPECT_EQ(LoadLogSettings(), 0);
  EXPECT_FALSE(LoggingIsOn());
  ResetLogSettings();
  ASSERT_EQ(registry.SetValue(key, u"Logging", ce::host::RegistryValue::Text(u"12345")), 0u);
  EXPECT_EQ(LoadLogSettings(), 0);
  EXPECT_FALSE(LoggingIsOn());
}

TEST_F(LoggingSwitch, EveryFailingCallOfLoadingLeavesItOffOrOn) {
  handheld_.SetAgentValue(u"Logging", 42);
  for (std::uint64_t n = 1;; ++n) {
    ResetLogSettings();
    const auto plan = ce::host::FaultPlan::FailNth(n, 5);
    EXPECT_EQ(LoadLogSettings(), 0);
    EXPECT_TRUE(LoggingLevel == 0u || LoggingLevel == 42u);
    EXPECT_EQ(VerboseLogging, LoggingLevel == 42u);
    if (!plan.fired()) break;
  }
  EXPECT_EQ(LoggingLevel, 42u);
}

TEST_F(LoggingSwitch, RequestRefusesAnyOtherSizeAndAStream) {
  SetLoggingLevel(1);
  const ce::BYTE input[8] = {};
  for (const ce::DWORD size : {0u, 3u, 5u, 8u}) {
    EXPECT_EQ(CVResetLoggingState(size, input, &outputCount_, &output_, nullptr), ce::E_INVALIDARG);
  }
  int place = 0;
  EXPECT_EQ(CVResetLoggingState(4, input, &outputCount_, &output_,
                                reinterpret_cast<CorvaneStream*>(&place)),
            ce::E_INVALIDARG);
  EXPECT_EQ(LoggingLevel, 1u);
}

TEST_F(LoggingSwitch, RequestStoresTheLevel) {
  EXPECT_EQ(Reset(5), 0);
  EXPECT_EQ(LoggingLevel, 5u);
  EXPECT_FALSE(VerboseLogging);
  EXPECT_EQ(StoredLevel(), 5u);
  EXPECT_EQ(outputCount_, 0u);
  EXPECT_EQ(output_, nullptr);
}

TEST_F(LoggingSwitch, RequestFor42IsVerboseUntilAnotherLevel) {
  EXPECT_EQ(Reset(42), 0);
  EXPECT_TRUE(VerboseLogging);
  EXPECT_EQ(Reset(1), 0);
  EXPECT_FALSE(VerboseLogging);
}

TEST_F(LoggingSwitch, SwitchingOffEndsTheLogAndKeepsBothFiles) {
  ASSERT_EQ(Reset(1), 0);
  LOG(u"old");
  ASSERT_EQ(Reset(1), 0);
  LOG(u"new");
  const std::string old = OldContent();
  EXPECT_EQ(Reset(0), 0);
  LOG(u"nowhere");
  EXPECT_THAT(Body(), ElementsAre("new", "Log finished"));
  EXPECT_EQ(OldContent(), old);
  EXPECT_EQ(StoredLevel(), 0u);
}

TEST_F(LoggingSwitch, SwitchingOnRotatesTheFile) {
  ASSERT_EQ(Reset(1), 0);
  LOG(u"first");
  ASSERT_EQ(Reset(1), 0);
  EXPECT_THAT(Content(), IsEmpty());
  LOG(u"second");
  EXPECT_THAT(Body(), ElementsAre("second"));
  EXPECT_THAT(OldContent(), HasSubstr(" : first\r\n"));
  EXPECT_TRUE(OldContent().ends_with(" : Log finished\r\n"));
  ASSERT_EQ(Reset(3), 0);
  EXPECT_THAT(OldContent(), HasSubstr(" : second\r\n"));
  EXPECT_EQ(OldContent().find(" : first\r\n"), std::string::npos);
}

TEST_F(LoggingSwitch, SwitchingOnRotatesALogThatIsNotOpen) {
  SetLoggingLevel(1);
  Log(u"earlier");
  CloseLog();
  SetLoggingLevel(0);
  EXPECT_EQ(Reset(1), 0);
  EXPECT_THAT(OldContent(), HasSubstr(" : earlier\r\n"));
  EXPECT_THAT(Content(), IsEmpty());
}

TEST_F(LoggingSwitch, RequestAnswersTheRegistrysStatus) {
  {
    const auto plan = ce::host::FaultPlan::FailCalls("RegCreateKeyExW", 0x80004005);
    EXPECT_EQ(Reset(1), ce::E_FAIL);
  }
  {
    const auto plan = ce::host::FaultPlan::FailCalls("RegSetValueExW", 5);
    EXPECT_EQ(Reset(1), 5);
  }
  EXPECT_EQ(LoggingLevel, 1u);
}

// A positive code passes the sign test, so the value is still set, on a key that is not there.
TEST_F(LoggingSwitch, RequestGoesOnWithoutAKey) {
  const auto plan = ce::host::FaultPlan::FailCalls("RegCreateKeyExW", 5);
  EXPECT_EQ(Reset(1), static_cast<ce::HRESULT>(ce::ERROR_INVALID_HANDLE));
}

TEST_F(LoggingSwitch, EveryFailingCallOfTheRequestSwitchesAllTheSame) {
  for (std::uint64_t n = 1;; ++n) {
    SetLoggingLevel(1);
    Log(u"open");
    bool fired = false;
    std::string failed;
    ce::HRESULT status = 0;
    {
      const auto plan = ce::host::FaultPlan::FailNth(n, 5);
      status = Reset(42);
      fired = plan.fired();
      failed = plan.firedCall();
    }
    EXPECT_GE(status, 0) << failed;
    EXPECT_EQ(LoggingLevel, 42u) << failed;
    if (failed.starts_with("RegCreate") || failed.starts_with("RegSet")) {
      EXPECT_NE(status, 0) << failed;
    } else {
      EXPECT_EQ(StoredLevel(), 42u) << failed;
    }
    Log(u"after");
    EXPECT_EQ(Body().back(), "after") << failed;
    if (!fired) {
      EXPECT_EQ(status, 0);
      EXPECT_GT(n, 8u);
      break;
    }
  }
}

}  // namespace
}  // namespace corvane
