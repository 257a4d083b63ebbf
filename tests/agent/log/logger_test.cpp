// The log file, line by line.
#include "agent/log/logger.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <regex>
#include <thread>

#include "agent/log/build_stamp.h"
#include "agent/log/log.h"
#include "handheld/base/fault.h"
#include "platform/clock.h"
#include "platform/status.h"
#include "platform/system.h"
#include "platform/text.h"
#include "tests/agent/log/log_support.h"

namespace corvane {
namespace {

using ::testing::ElementsAre;
using ::testing::HasSubstr;
using ::testing::IsEmpty;
using testing::LogLine;
using testing::LogTest;
using ::testing::MatchesRegex;
using ::testing::Not;
using testing::ParseLog;
using ::testing::StartsWith;

std::string ModuleName() {
  ce::WCHAR wide[261] = {};
  ce::GetModuleFileNameW(0, wide, 260);
  char narrow[1024] = {};
  ce::WideCharToMultiByte(ce::CP_ACP, 0, wide, -1, narrow, sizeof(narrow), nullptr, nullptr);
  return narrow;
}

std::string Hex(const char* format, unsigned value) {
  char text[16];
  std::snprintf(text, sizeof(text), format, value);
  return text;
}

std::string Header(const std::string& when) {
  return "Log is started on " + when + ", executable: " + ModuleName() + " (ProcID: 0x" +
         Hex("%08x", ce::GetCurrentProcessId()) + "), compile time : " + kBuildDate + " " +
         kBuildTime;
}

TEST_F(LogTest, BeginsWithAHeader) {
  Log(u"first");
  EXPECT_THAT(testing::Messages(Content()),
              ElementsAre(std::string(45, '='), Header("25.02.2008, at 12:52:35:067"), "first"));
}

TEST_F(LogTest, HeaderShowsLocalTime) {
  handheld_.SetZone("Europe/Berlin");
  Log(u"first");
  EXPECT_THAT(Content(), HasSubstr(Header("25.02.2008, at 13:52:35:067")));
  EXPECT_EQ(ParseLog(Content()).back().time, "13:52:35");
}

TEST_F(LogTest, BuildStampHasTheFormOfDateAndTime) {
  EXPECT_THAT(std::string(kBuildDate), MatchesRegex("[A-Z][a-z][a-z] [ 1-3][0-9] [0-9]{4}"));
  EXPECT_THAT(std::string(kBuildTime), MatchesRegex("[0-2][0-9]:[0-5][0-9]:[0-5][0-9]"));
}

TEST_F(LogTest, LineIsByteExact) {
  ce::LONGLONG before = 0;
  ce::LONGLONG after = 0;
  Log(u"opens the file");
  ce::QueryPerformanceCounter(&before);
  Log(u"number %d, text %s", -7, u"x");
  ce::QueryPerformanceCounter(&after);
  const LogLine line = ParseLog(Content()).back();
  EXPECT_LE(before, line.counter);
  EXPECT_GE(after, line.counter);
  const std::string expected = "12:52:35(" + std::to_string(line.counter) + "),thr 0x" +
                               Hex("%08X", ce::GetCurrentThreadId()) + " : number -7, text x\r\n";
  EXPECT_TRUE(Content().ends_with("\r\n" + expected)) << Content();
}

TEST_F(LogTest, ThreadsTellTheirLinesApart) {
  unsigned other = 0;
  Log(u"one");
  std::thread([&] {
    other = ce::GetCurrentThreadId();
    Log(u"two");
  }).join();
  const std::vector<LogLine> lines = ParseLog(Content());
  ASSERT_EQ(lines.size(), 4u);
  EXPECT_EQ(lines[2].thread, ce::GetCurrentThreadId());
  EXPECT_EQ(lines[3].thread, other);
  EXPECT_NE(lines[2].thread, lines[3].thread);
}

TEST_F(LogTest, AppendsToAnEarlierLog) {
  Log(u"one");
  CloseLog();
  Log(u"two");
  const std::vector<std::string> messages = testing::Messages(Content());
  ASSERT_EQ(messages.size(), 7u);
  EXPECT_EQ(messages[2], "one");
  EXPECT_EQ(messages[3], "Log finished");
  EXPECT_EQ(messages[4], std::string(45, '='));
  EXPECT_THAT(messages[5], StartsWith("Log is started on "));
  EXPECT_EQ(messages[6], "two");
}

TEST_F(LogTest, ClosingTwiceEndsTheFileOnce) {
  Log(u"one");
  CloseLog();
  CloseLog();
  EXPECT_THAT(Body(), ElementsAre("one", "Log finished"));
}

TEST_F(LogTest, ClosingAnUnopenedLogMakesNoFile) {
  CloseLog();
  EXPECT_THAT(Content(), IsEmpty());
}

TEST_F(LogTest, SwitchedOffTouchesNoFile) {
  SetLoggingLevel(0);
  int evaluated = 0;
  LOG(u"%d", ++evaluated);
  EXPECT_EQ(evaluated, 0);
  EXPECT_FALSE(std::filesystem::exists(handheld_->filesRoot() / testing::kLogFile));
}

TEST_F(LogTest, SwitchedOnWritesThroughTheMacro) {
  LOG(u"Got Quit Request");
  LOG(u"inputCount = %d", 4);
  EXPECT_THAT(Body(), ElementsAre("Got Quit Request", "inputCount = 4"));
}

TEST_F(LogTest, TakesAnEmptyMessage) {
  Log(u"");
  EXPECT_THAT(Body(), ElementsAre(""));
}

TEST_F(LogTest, WritesTextInTheHandheldsCodePage) {
  Log(u"caf\u00E9 %s", u"\u00FC");
  EXPECT_THAT(Body(), ElementsAre("caf\xE9 \xFC"));
}

TEST_F(LogTest, WritesTextOfATwoByteCodePageWhole) {
  handheld_.SetLanguage(ce::kLangJapanese);
  Log(u"%s!", u"\u6F22\u5B57");
  EXPECT_THAT(Body(), ElementsAre("\x8A\xBF\x8E\x9A!"));
}

TEST_F(LogTest, DropsAMessageOfMoreThan1024Characters) {
  Log(u"before");
  Log(u"%s", std::u16string_view(std::u16string(1025, u'x')));
  Log(u"after");
  EXPECT_THAT(Body(), ElementsAre("before", "after"));
}

TEST_F(LogTest, DropsALineOfMoreThan1024Bytes) {
  Log(u"opens the file");
  // What stands around a message: its length varies with the counter's digits.
  Log(u"");
  const std::size_t frame = Content().size() - Content().rfind("\n", Content().size() - 2) - 1;
  const std::u16string fits(1024 - frame, u'x');
  Log(u"%s", std::u16string_view(fits));
  Log(u"%sy", std::u16string_view(fits));
  Log(u"%s", std::u16string_view(std::u16string(1024, u'z')));
  EXPECT_THAT(Body(), ElementsAre("opens the file", "", std::string(1024 - frame, 'x')));
}

TEST_F(LogTest, DropsALineThatIsTooLongOnlyInItsCodePage) {
  handheld_.SetLanguage(ce::kLangJapanese);
  Log(u"%s", std::u16string_view(std::u16string(500, u'\u6F22')));
  Log(u"%s", std::u16string_view(std::u16string(600, u'\u6F22')));
  Log(u"after");
  ASSERT_EQ(Body().size(), 1u);
  EXPECT_THAT(Body(), ElementsAre("after"));
}

TEST_F(LogTest, IndentsByTheThreadsDepth) {
  Log(u"opens the file");
  Logger::Instance().SetIndent(3);
  Log(u"deep");
  std::thread([] { Log(u"another thread"); }).join();
  Logger::Instance().SetIndent(250);
  Log(u"deepest");
  Logger::Instance().SetIndent(0);
  Log(u"flat");
  EXPECT_THAT(Body(), ElementsAre("opens the file", "   deep", "another thread",
                                  std::string(100, ' ') + "deepest", "flat"));
}

TEST_F(LogTest, OpeningTheFileEndsTheIndentation) {
  Log(u"one");
  Logger::Instance().SetIndent(5);
  CloseLog();
  Log(u"two");
  EXPECT_THAT(Body(), ElementsAre("two"));
}

TEST_F(LogTest, NarrowLinesHaveTheSameForm) {
  LogNarrow("count %d of %s", 3, "four");
  EXPECT_THAT(Body(), ElementsAre("count 3 of four"));
  LogNarrow("%s", std::string_view(std::string(1025, 'x')));
  EXPECT_THAT(Body(), ElementsAre("count 3 of four"));
}

TEST_F(LogTest, BinaryStandsBetweenTwoLines) {
  const std::string bytes("a\0b\r\n\xFF", 6);
  LogBinary(bytes.data(), 6);
  const std::string content = Content();
  const std::size_t first = content.find("***Binary data (6 bytes)\r\n");
  ASSERT_NE(first, std::string::npos);
  const std::string rest = content.substr(first + 26);
  EXPECT_TRUE(rest.starts_with(bytes + "\r\n12:52:35(")) << rest;
  EXPECT_TRUE(rest.ends_with(" : ***End binary data (written 2 bytes)\r\n")) << rest;
}

TEST_F(LogTest, BinaryOfNothingIsAnEmptyLine) {
  LogBinary(nullptr, 0);
  EXPECT_THAT(Content(), HasSubstr("***Binary data (0 bytes)\r\n\r\n12:52:35("));
}

TEST_F(LogTest, KeepsTheLastError) {
  const auto failing = [] {
    ce::SetLastError(1234);
    Log(u"opens the file");
    EXPECT_EQ(ce::GetLastError(), 1234u);
    LogNarrow("x");
    LogBinary("x", 1);
    EXPECT_EQ(ce::GetLastError(), 1234u);
    CloseLog();
    EXPECT_EQ(ce::GetLastError(), 1234u);
  };
  failing();
  const auto plan = ce::host::FaultPlan::FailCalls("WriteFile", 112);
  failing();
}

TEST_F(LogTest, AFileThatCannotBeMadeIsTriedAgain) {
  {
    const auto plan = ce::host::FaultPlan::FailCalls("CreateFileW", ce::ERROR_ACCESS_DENIED);
    Log(u"lost");
    LogNarrow("lost");
    LogBinary("lost", 4);
    EXPECT_TRUE(plan.fired());
    EXPECT_EQ(plan.calls(), 3u);
    CloseLog();
  }
  EXPECT_THAT(Content(), IsEmpty());
  Log(u"found");
  EXPECT_THAT(Body(), ElementsAre("found"));
}

TEST_F(LogTest, AFailedWriteIsFlushedAndNotReported) {
  Log(u"before");
  {
    const auto plan = ce::host::FaultPlan::FailNthCall("WriteFile", 1, 112);
    Log(u"lost");
  }
  {
    const auto writes = ce::host::FaultPlan::FailCalls("FlushFileBuffers", 112);
    Log(u"whole");
    EXPECT_EQ(writes.calls(), 0u);
  }
  EXPECT_THAT(Body(), ElementsAre("before", "whole"));
}

// Whatever fails, lines are whole and the log works again afterwards.
TEST_F(LogTest, SurvivesEveryFailingCall) {
  for (std::uint64_t n = 1;; ++n) {
    CloseLog();
    bool fired = false;
    std::string failed;
    {
      const auto plan = ce::host::FaultPlan::FailNth(n, 112);
      Log(u"one %s", u"text");
      LogNarrow("two");
      CloseLog();
      fired = plan.fired();
      failed = plan.firedCall();
    }
    Log(u"after");
    EXPECT_EQ(Body().back(), "after") << failed;
    if (!fired) {
      EXPECT_GT(n, 15u);
      break;
    }
  }
  EXPECT_THAT(Content(), Not(HasSubstr("lost")));
}

TEST_F(LogTest, SwitchingManyThreadsWriteWholeLines) {
  std::vector<std::thread> threads;
  for (int i = 0; i < 4; ++i) {
    threads.emplace_back([i] {
      for (int line = 0; line < 50; ++line) {
        LOG(u"thread %d line %d", i, line);
        if (line == 25) CloseLog();
      }
    });
  }
  for (std::thread& thread : threads) thread.join();
  std::size_t lines = 0;
  for (const std::string& message : testing::Messages(Content())) {
    if (message.starts_with("thread ")) ++lines;
  }
  // A line may fall between a closing and the next opening.
  EXPECT_GE(lines, 4u * 50 - 16);
  EXPECT_LE(lines, 4u * 50);
}

TEST(LogWithoutAHandheld, DoesNothing) {
  SetLoggingLevel(1);
  Log(u"nowhere");
  LogBinary("x", 1);
  CloseLog();
  ResetLogSettings();
  EXPECT_FALSE(LoggingIsOn());
}

}  // namespace
}  // namespace corvane
