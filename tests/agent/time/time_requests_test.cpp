#include "agent/time/time_requests.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cstring>

#include "agent/log/log.h"
#include "handheld/base/fault.h"
#include "platform/memory.h"
#include "platform/status.h"
#include "tests/agent/time/time_support.h"

namespace corvane {
namespace {

using testing::At;
using ::testing::HasSubstr;
using ::testing::Not;
using testing::ZoneTest;

CorvaneStream* SomeStream() {
  static int place;
  return reinterpret_cast<CorvaneStream*>(&place);
}

class TimeRequests : public ZoneTest {
 protected:
  void SetUp() override {
    ZoneTest::SetUp();
    ResetLogSettings();
  }
  void TearDown() override {
    CloseLog();
    ResetLogSettings();
    ce::LocalFree(output_);
    ZoneTest::TearDown();
  }

  ce::HRESULT Get(CorvaneStream* stream = nullptr) {
    return CVCeGetSystemTime(0, nullptr, &outputCount_, &output_, stream);
  }
  ce::HRESULT Set(const ce::SYSTEMTIME& time) {
    ce::BYTE input[sizeof(time) + 1];
    std::memcpy(input + 1, &time, sizeof(time));  // not aligned, as on the wire
    return CVCeSetSystemTime(sizeof(time), input + 1, &outputCount_, &output_, nullptr);
  }
  static ce::SYSTEMTIME Now() {
    ce::SYSTEMTIME now{};
    ce::GetSystemTime(&now);
    return now;
  }

  ce::DWORD outputCount_ = 0;
  ce::BYTE* output_ = nullptr;
};

TEST_F(TimeRequests, GetAnswersTheUtcTime) {
  UseZone("Europe/Berlin");
  handheld_.FreezeClock(At(2008, 2, 25, 12, 52, 35, 67));
  EXPECT_EQ(Get(), ce::S_OK);
  ASSERT_EQ(outputCount_, 16u);
  const ce::WORD expected[] = {2008, 2, 1, 25, 12, 52, 35, 67};
  EXPECT_EQ(std::memcmp(output_, expected, sizeof(expected)), 0);
}

TEST_F(TimeRequests, GetIgnoresItsInput) {
  handheld_.FreezeClock(At(2008, 2, 25));
  const ce::BYTE input[3] = {1, 2, 3};
  EXPECT_EQ(CVCeGetSystemTime(3, input, &outputCount_, &output_, nullptr), ce::S_OK);
  EXPECT_EQ(outputCount_, 16u);
}

TEST_F(TimeRequests, GetRefusesAStream) {
  EXPECT_EQ(Get(SomeStream()), ce::E_INVALIDARG);
  EXPECT_EQ(outputCount_, 0u);
  EXPECT_EQ(output_, nullptr);
}

TEST_F(TimeRequests, GetAnswersTheLastErrorWithoutMemory) {
  const auto plan = ce::host::FaultPlan::FailCalls("LocalAlloc", ce::ERROR_NOT_ENOUGH_MEMORY);
  EXPECT_EQ(Get(), static_cast<ce::HRESULT>(ce::ERROR_NOT_ENOUGH_MEMORY));
  EXPECT_EQ(outputCount_, 0u);
  EXPECT_EQ(output_, nullptr);
}

TEST_F(TimeRequests, GetAnswersZerosWhenTheClockFails) {
  const auto plan = ce::host::FaultPlan::FailCalls("GetSystemTime", 31);
  EXPECT_EQ(Get(), ce::S_OK);
  ASSERT_EQ(outputCount_, 16u);
  EXPECT_EQ(std::string(reinterpret_cast<char*>(output_), 16), std::string(16, '\0'));
}

TEST_F(TimeRequests, SetMovesTheClock) {
  handheld_.FreezeClock(At(2008, 2, 25, 12));
  outputCount_ = 99;
  EXPECT_EQ(Set(At(2010, 7, 1, 8, 30, 15, 500)), ce::S_OK);
  EXPECT_EQ(Now(), At(2010, 7, 1, 8, 30, 15, 500));
  EXPECT_EQ(outputCount_, 0u);
  EXPECT_EQ(output_, nullptr);
}

TEST_F(TimeRequests, SetRefusesAnyOtherSize) {
  const ce::BYTE input[32] = {};
  for (const ce::DWORD size : {0u, 15u, 17u, 32u}) {
    EXPECT_EQ(CVCeSetSystemTime(size, input, &outputCount_, &output_, nullptr), ce::E_INVALIDARG)
        << size;
  }
}

TEST_F(TimeRequests, SetRefusesAStream) {
  handheld_.FreezeClock(At(2008, 2, 25, 12));
  const ce::SYSTEMTIME time = At(2010, 7, 1);
  EXPECT_EQ(CVCeSetSystemTime(sizeof(time), reinterpret_cast<const ce::BYTE*>(&time), &outputCount_,
                              &output_, SomeStream()),
            ce::E_INVALIDARG);
  EXPECT_EQ(Now(), At(2008, 2, 25, 12));
}

TEST_F(TimeRequests, SetOfAnImpossibleTimeAnswersTheLastErrorAndSetsNothing) {
  UseZone("Europe/Berlin");
  handheld_.FreezeClock(At(2008, 7, 1, 12));
  ce::SYSTEMTIME time = At(2008, 1, 31);
  time.wMonth = 2;
  EXPECT_EQ(Set(time), static_cast<ce::HRESULT>(ce::ERROR_INVALID_PARAMETER));
  EXPECT_EQ(Set(ce::SYSTEMTIME{}), static_cast<ce::HRESULT>(ce::ERROR_INVALID_PARAMETER));
  EXPECT_EQ(Now(), At(2008, 7, 1, 12));
}

TEST_F(TimeRequests, SetIgnoresTheDayOfTheWeek) {
  handheld_.FreezeClock(At(2008, 2, 25, 12));
  ce::SYSTEMTIME time = At(2008, 2, 26, 12);
  time.wDayOfWeek = 6;
  EXPECT_EQ(Set(time), ce::S_OK);
  EXPECT_EQ(Now(), At(2008, 2, 26, 12));
}

// The bias is negative, so taking it away moves the clock ahead.
TEST_F(TimeRequests, SettingFromStandardIntoDaylightTakesTheBiasAway) {
  UseZone("Europe/Berlin");
  handheld_.FreezeClock(At(2008, 2, 25, 12));
  EXPECT_EQ(Set(At(2008, 7, 1, 12)), ce::S_OK);
  EXPECT_EQ(Now(), At(2008, 7, 1, 13));
}

TEST_F(TimeRequests, SettingFromDaylightIntoStandardAddsTheBias) {
  UseZone("Europe/Berlin");
  handheld_.FreezeClock(At(2008, 7, 1, 12));
  EXPECT_EQ(Set(At(2008, 12, 1, 12)), ce::S_OK);
  EXPECT_EQ(Now(), At(2008, 12, 1, 11));
}

TEST_F(TimeRequests, SettingWithinOneStateAddsNothing) {
  UseZone("Europe/Berlin");
  handheld_.FreezeClock(At(2008, 7, 1, 12));
  EXPECT_EQ(Set(At(2008, 8, 1, 12)), ce::S_OK);
  EXPECT_EQ(Now(), At(2008, 8, 1, 12));
  EXPECT_EQ(Set(At(2009, 5, 1, 12)), ce::S_OK);
  EXPECT_EQ(Now(), At(2009, 5, 1, 12));
}

// In Berlin daylight begins at 01:00 UTC; judged as a local time, 01:30 UTC is still standard.
TEST_F(TimeRequests, JudgesUtcTimesAsIfTheyWereLocal) {
  UseZone("Europe/Berlin");
  handheld_.FreezeClock(At(2008, 2, 25, 12));
  EXPECT_EQ(Set(At(2008, 3, 30, 1, 30)), ce::S_OK);
  EXPECT_EQ(Now(), At(2008, 3, 30, 1, 30));
  EXPECT_EQ(Set(At(2008, 3, 30, 2)), ce::S_OK);
  EXPECT_EQ(Now(), At(2008, 3, 30, 3));
}

TEST_F(TimeRequests, DaylightSwitchOffSetsTheTimeAsGiven) {
  UseZone("Europe/Berlin");
  g_bUseDST = 0;
  handheld_.FreezeClock(At(2008, 2, 25, 12));
  EXPECT_EQ(Set(At(2008, 7, 1, 12)), ce::S_OK);
  EXPECT_EQ(Now(), At(2008, 7, 1, 12));
}

TEST_F(TimeRequests, SetAnswersTheLastErrorWhenTheClockRefuses) {
  const auto plan = ce::host::FaultPlan::FailCalls("SetSystemTime", ce::ERROR_ACCESS_DENIED);
  EXPECT_EQ(Set(At(2008, 7, 1)), static_cast<ce::HRESULT>(ce::ERROR_ACCESS_DENIED));
}

TEST_F(TimeRequests, LogsWhatSettingDoes) {
  UseZone("Europe/Berlin");
  handheld_.SetAgentValue(u"Logging", 1);
  handheld_.FreezeClock(At(2008, 2, 25, 12));
  EXPECT_EQ(Set(At(2008, 3, 1, 12)), ce::S_OK);
  std::string log = handheld_.FileContent("CorvaneLog.txt");
  EXPECT_THAT(log, HasSubstr(" : MySetSystemTime called\r\n"));
  EXPECT_THAT(log, Not(HasSubstr("DSTBias")));
  EXPECT_EQ(Set(At(2008, 7, 1, 12)), ce::S_OK);
  log = handheld_.FileContent("CorvaneLog.txt");
  EXPECT_THAT(log, HasSubstr(" : subtracting DSTBias\r\n"));
  EXPECT_THAT(log, Not(HasSubstr("adding DSTBias")));
  EXPECT_EQ(Set(At(2008, 12, 1, 12)), ce::S_OK);
  EXPECT_THAT(handheld_.FileContent("CorvaneLog.txt"), HasSubstr(" : adding DSTBias\r\n"));
}

TEST_F(TimeRequests, EveryFailingCallOfSetAnswersHonestly) {
  UseZone("Europe/Berlin");
  for (std::uint64_t n = 1;; ++n) {
    handheld_.FreezeClock(At(2008, 2, 25, 12));
    ResetTimeZoneCache();
    ResetLogSettings();
    std::string failed;
    ce::HRESULT status = ce::S_OK;
    {
      const auto plan = ce::host::FaultPlan::FailNth(n, ce::ERROR_ACCESS_DENIED);
      status = Set(At(2008, 7, 1, 12));
      failed = plan.firedCall();
    }
    const ce::SYSTEMTIME now = Now();
    if (failed.empty()) {
      EXPECT_EQ(status, ce::S_OK);
      EXPECT_EQ(now, At(2008, 7, 1, 13));
      EXPECT_GT(n, 5u);
      break;
    }
    if (status == ce::S_OK) {
      EXPECT_TRUE(now == At(2008, 7, 1, 12) || now == At(2008, 7, 1, 13)) << failed;
    } else {
      EXPECT_GT(status, 0) << failed;
      EXPECT_EQ(now, At(2008, 2, 25, 12)) << failed;
    }
  }
}

}  // namespace
}  // namespace corvane
