#include "agent/log/timing_counter.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "agent/log/log.h"
#include "agent/log/logger.h"
#include "tests/agent/log/log_support.h"

namespace corvane {
namespace {

using ::testing::HasSubstr;
using testing::LogTest;
using ::testing::Not;

TEST(TimingCounter, KeepsCountExtremesAndTotal) {
  TimingCounter counter(7);
  for (const ce::LONGLONG time : {5, 2, 9}) counter.Add(time);
  const TimingCounter::Statistics statistics = counter.Read();
  EXPECT_EQ(statistics.identifier, 7);
  EXPECT_EQ(statistics.calls, 3);
  EXPECT_EQ(statistics.minimum, 2);
  EXPECT_EQ(statistics.maximum, 9);
  EXPECT_EQ(statistics.total, 16);
  EXPECT_EQ(statistics.Average(), 5);
}

TEST(TimingCounter, OfNoCallsHasNoAverage) {
  EXPECT_EQ(TimingCounter(1).Read().Average(), 0);
}

class TimingCounters : public LogTest {};

TEST_F(TimingCounters, ArePrintedFromTheLastWhenTheLogCloses) {
  Logger& logger = Logger::Instance();
  logger.AddTimingCounter(1)->Add(4);
  TimingCounter* second = logger.AddTimingCounter(2);
  second->Add(10);
  second->Add(5'000'000'001);
  CloseLog();
  const std::string content = Content();
  const std::size_t later = content.find(
      " : Counter 2 statistics\r\n\tCounts: 2,\r\n\tMinTime: 10 ms,\r\n\tMaxTime: 5000000001 ms,"
      "\r\n\tTotalTime: 5000000011 ms,\r\n\tAverageTime: 2500000005 ms\r\n");
  const std::size_t earlier = content.find(
      " : Counter 1 statistics\r\n\tCounts: 1,\r\n\tMinTime: 4 ms,\r\n\tMaxTime: 4 ms,"
      "\r\n\tTotalTime: 4 ms,\r\n\tAverageTime: 4 ms\r\n");
  ASSERT_NE(later, std::string::npos) << content;
  ASSERT_NE(earlier, std::string::npos) << content;
  EXPECT_LT(later, earlier);
  EXPECT_LT(earlier, content.find(" : Log finished\r\n"));
}

TEST_F(TimingCounters, AreGoneAfterTheyWerePrinted) {
  Logger::Instance().AddTimingCounter(1);
  CloseLog();
  ASSERT_THAT(Content(), HasSubstr("Counter 1 statistics"));
  std::filesystem::remove(handheld_->filesRoot() / testing::kLogFile);
  Log(u"again");
  CloseLog();
  EXPECT_THAT(Content(), Not(HasSubstr("statistics")));
}

TEST_F(TimingCounters, AreThirtyAtMost) {
  for (int i = 0; i < 30; ++i) EXPECT_NE(Logger::Instance().AddTimingCounter(i), nullptr) << i;
  EXPECT_EQ(Logger::Instance().AddTimingCounter(30), nullptr);
}

TEST_F(TimingCounters, MeasureByTheLogsOwnTime) {
  const ce::LONGLONG first = Logger::Instance().ElapsedMilliseconds();
  EXPECT_GE(first, 0);
  EXPECT_GE(Logger::Instance().ElapsedMilliseconds(), first);
}

}  // namespace
}  // namespace corvane
